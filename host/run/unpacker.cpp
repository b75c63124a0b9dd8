#include "host/run/unpacker.h"

#include <array>
#include <new>
#include <stdexcept>

namespace host {

namespace {

constexpr int kGzip = 16;  // on top of the window's width: the head and the end are gzip's

}  // namespace

Unpacker::Unpacker() {
  if (inflateInit2(&stream_, kGzip + MAX_WBITS) != Z_OK) throw std::bad_alloc();
}

Unpacker::~Unpacker() {
  inflateEnd(&stream_);
}

std::string Unpacker::Unpack(std::string_view packed) {
  std::string bytes;
  std::array<char, 65536> piece;
  stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream_.avail_in = static_cast<uInt>(packed.size());
  do {
    if (at_end_) {
      // What pads a file after its last member is none of it.
      if (stream_.avail_in == 0 || *stream_.next_in != 0x1F) return bytes;
      inflateReset(&stream_);
    }
    stream_.next_out = reinterpret_cast<Bytef*>(piece.data());
    stream_.avail_out = piece.size();
    const int result = inflate(&stream_, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
      throw std::runtime_error(stream_.msg != nullptr ? stream_.msg : "it needs a dictionary");
    at_end_ = result == Z_STREAM_END;
    bytes.append(piece.data(), piece.size() - stream_.avail_out);
  } while (stream_.avail_in > 0 || stream_.avail_out == 0);
  return bytes;
}

}  // namespace host
