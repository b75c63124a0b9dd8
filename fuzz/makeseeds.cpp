// makeseeds FOLDER: writes what the fuzzers begin with. FOLDER/<target>/ gets its seeds: the conversation of
// every model with its simulated receiver, its messages by themselves, and a few files. FOLDER/gps.dict is
// the dictionary: every tag of the library and every command that a driver writes.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <memory>
#include <set>
#include <string_view>

#include "gpsengine/drivers/receivers.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/sentencetable.h"
#include "tests/support/blocks.h"
#include "tests/support/conversation.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> LinesOf(std::string text) {
  std::replace(text.begin(), text.end(), '\r', '\n');
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);)
    if (!line.empty()) lines.push_back(line);
  return lines;
}

class Seeds {
 public:
  explicit Seeds(fs::path folder) : m_Folder(std::move(folder)) {}

  void Add(const std::string& target, const std::string& seed) {
    if (!m_Known.insert(target + '\n' + seed).second) return;
    const fs::path folder = m_Folder / target;
    fs::create_directories(folder);
    std::ofstream(folder / std::to_string(m_nCount++), std::ios::binary)
        .write(seed.data(), static_cast<std::streamsize>(seed.size()));
  }

 private:
  const fs::path m_Folder;
  std::set<std::string> m_Known;
  int m_nCount = 0;
};

using Dictionary = std::set<std::string>;

// Not what is too long for one to be found by, nor a number, of which there is no end.
void Add(Dictionary& words, std::string_view word) {
  if (word.size() >= 2 && word.size() <= 40 && word.find_first_not_of("0123456789.+-") != word.npos)
    words.emplace(word);
}

void Write(const Dictionary& words, const fs::path& path) {
  std::ofstream file(path);
  file << std::hex << std::setfill('0');
  for (const std::string& word : words) {
    file << '"';
    for (const unsigned char c : word) file << "\\x" << std::setw(2) << static_cast<unsigned>(c);
    file << "\"\n";
  }
}

using namespace std::string_literals;

// Heads of the inputs, as the targets read them.
const std::string kAllOnInPieces = "\x7D\x31"s;      // stream: the switches, the seed of the cuts
const std::string kByTagAttachedRepaired = "\x0A"s;  // parse: each message

void AddConversation(Seeds& seeds, char model, const Conversation& conversation) {
  constexpr std::size_t kPiece = 300;
  std::string_view rest = conversation.heard;
  for (int i = 0; i < 20 && !rest.empty(); ++i) {
    const auto end = std::min(rest.find('\n', std::min(kPiece, rest.size())), rest.size());
    seeds.Add("stream_fuzz", model + kAllOnInPieces + std::string(rest.substr(0, end)));
    rest.remove_prefix(end);
  }
}

// Of all these messages the fuzzers keep those that reach something new.
void AddMessages(Seeds& seeds, const std::string& heard) {
  for (const std::string& line : LinesOf(heard)) {
    if (line.find_first_of("$#P") != 0) continue;
    seeds.Add("parse_fuzz", "m1" + kByTagAttachedRepaired + line + '\n');
    seeds.Add("parser_fuzz", "\x04"s + std::string(20, '\0') + '\n' + line);
  }
}

// Blocks of raw data: each by itself, and all of a receiver in a row.
void AddBlocks(Seeds& seeds) {
  for (const auto* sources : {&kObservations, &kEphemerides}) {
    for (const BlockSource& source : *sources) {
      std::string all;
      for (const std::string& block : Blocks(source, 2)) {
        const std::string seed = {static_cast<char>(block.size() >> 8), static_cast<char>(block.size())};
        seeds.Add("rawdata_fuzz", seed + block);
        all += seed + block;
      }
      seeds.Add("rawdata_fuzz", all);
    }
  }
}

void AddFiles(Seeds& seeds, const std::string& recording) {
  seeds.Add("files_fuzz",
            "\x03"
            "4,\"UDF_SIGNAL_RTK_CODE\"\r\n5, UDF_SIGNAL_WAAS\ndefault,UDF_SIGNAL_NONE\n7\n");
  seeds.Add("files_fuzz",
            "\x05; a profile\n[Window]\nWidth=800\n\n[SiRF]\n Baud = 4800 \n[SiRF]\nBaud=1\n[half");
  seeds.Add("files_fuzz", "\x04QRV PAUSE,Turn the key*\n" + recording.substr(0, 1000));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: makeseeds FOLDER\n", stderr);
    return 2;
  }
  const fs::path folder = argv[1];
  fs::remove_all(folder);
  Seeds seeds(folder);
  Dictionary dictionary;
  for (const SentenceTable::Row& row : SentenceTable::kRows)
    Add(dictionary, std::string(row.tag.begin(), row.tag.end()));
  for (const char* word :
       {"\xAA\x44\x12", "$BIN_", "$BIN`", "[COM1]", "QRV PAUSE", "UDF_SIGNAL_", "default,", "\r\n"})
    Add(dictionary, word);
  for (const char* number : {"1e308", "-1e308", "1e-320", "2147483646", "-2147483647", "4294967297", "00"})
    dictionary.emplace(number);

  CWinApp app("gpsengine-fuzz");
  char model = 0;
  for (const auto& receiver : MakeReceivers()) {
    const Conversation conversation = Talk(*receiver);
    for (const std::string& line : LinesOf(conversation.said)) Add(dictionary, line);
    AddConversation(seeds, model++, conversation);
    AddMessages(seeds, conversation.heard);
    if (receiver->GetName() == "Other") AddFiles(seeds, conversation.heard);
  }
  AddBlocks(seeds);
  Write(dictionary, folder / "gps.dict");
  return 0;
}
