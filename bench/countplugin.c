/* A plugin of QEMU that counts the instructions of a program, and says at its end how many they were. The distribution has
   no header for plugins: what is used of their interface is declared here. */
#include <inttypes.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

struct qemu_plugin_tb;
void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t id, void (*translated)(uint64_t id, struct qemu_plugin_tb *block));
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *block);
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb *block, int operation, void *value, uint64_t operand);
void qemu_plugin_register_atexit_cb(uint64_t id, void (*ended)(uint64_t id, void *data), void *data);

int qemu_plugin_version = 1;

static uint64_t count;

static void on_block(uint64_t id, struct qemu_plugin_tb *block) {
  enum { add = 0 };
  (void)id;
  qemu_plugin_register_vcpu_tb_exec_inline(block, add, &count, qemu_plugin_tb_n_insns(block));
}

static void on_end(uint64_t id, void *data) {
  (void)id;
  (void)data;
  fprintf(stderr, "instructions %" PRIu64 "\n", count);
}

int qemu_plugin_install(uint64_t id, const void *info, int argc, char **argv) {
  (void)info;
  (void)argc;
  (void)argv;
  qemu_plugin_register_vcpu_tb_trans_cb(id, on_block);
  qemu_plugin_register_atexit_cb(id, on_end, NULL);
  return 0;
}
