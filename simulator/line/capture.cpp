// pcapng blocks: type, length, body, length again; options are code, length, value, all padded to
// four bytes. Written little-endian, read in either order.
#include "simulator/line/capture.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>

#include "simulator/line/private_file.h"

namespace sim {

namespace {
enum Block : uint32_t { SECTION = 0x0A0D0D0A, INTERFACE = 1, ENHANCED_PACKET = 6 };
enum Option : uint16_t { END = 0, COMMENT = 1, NAME = 2, FLAGS = 2, RESOLUTION = 9 };
}  // namespace
constexpr uint32_t ORDER_MARK = 0x1A2B3C4D;
constexpr uint16_t LINK_TYPE = 147;  // USER0
constexpr uint32_t DIRECTION_BITS = 3;
constexpr uint32_t MICROSECONDS = 6;                    // 10^-6 s, the default of the format
constexpr uint64_t LATEST = 1'000'000'000'000'000'000;  // microseconds; later times are cut to this
constexpr char GONE[] = "the device is gone";

// ---- writing ----

static void put(Bytes& out, uint64_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) out.push_back(static_cast<uint8_t>(value >> 8 * i));
}
static size_t padded(size_t length) { return (length + 3) / 4 * 4; }
static void pad(Bytes& out) { out.resize(padded(out.size())); }

static void put_option(Bytes& out, Option code, View value) {
  put(out, code, 2);
  put(out, value.size(), 2);
  out.insert(out.end(), value.begin(), value.end());
  pad(out);
}

static View as_bytes(const char* text) {
  return {static_cast<const uint8_t*>(static_cast<const void*>(text)), strlen(text)};
}

static void write_block(FILE* file, Block type, const Bytes& body) {
  Bytes block;
  put(block, type, 4);
  put(block, body.size() + 12, 4);
  block.insert(block.end(), body.begin(), body.end());
  put(block, body.size() + 12, 4);
  bool written = fwrite(block.data(), 1, block.size(), file) == block.size() && fflush(file) == 0;
  if (!written)
    throw std::runtime_error(std::string("can't write the capture: ") + strerror(errno));
}

void write_capture_header(FILE* file) {
  Bytes section;
  put(section, ORDER_MARK, 4);
  put(section, 1, 2);  // version 1.0
  put(section, 0, 2);
  put(section, UINT64_MAX, 8);  // length not known
  write_block(file, SECTION, section);
  Bytes interface;
  put(interface, LINK_TYPE, 2);
  put(interface, 0, 2);
  put(interface, 0, 4);  // no limit on lengths
  put_option(interface, NAME, as_bytes("DIAG"));
  put_option(interface, RESOLUTION, Bytes{MICROSECONDS});
  put_option(interface, END, {});
  write_block(file, INTERFACE, interface);
}

void write_captured(FILE* file, const CapturedPacket& packet) {
  auto time = static_cast<uint64_t>(packet.at.count());
  Bytes body;
  put(body, 0, 4);  // the one interface
  put(body, time >> 32, 4);
  put(body, time & 0xFFFFFFFF, 4);
  put(body, packet.bytes.size(), 4);
  put(body, packet.bytes.size(), 4);
  body.insert(body.end(), packet.bytes.begin(), packet.bytes.end());
  pad(body);
  Bytes flags;
  put(flags, packet.direction, 4);
  put_option(body, FLAGS, flags);
  if (packet.bytes.empty()) put_option(body, COMMENT, as_bytes(GONE));
  put_option(body, END, {});
  write_block(file, ENHANCED_PACKET, body);
}

// ---- reading ----

namespace {
class Reader {
 public:
  Reader(View file, const std::string& name) : file_(file), name_(name) {}

  std::vector<CapturedPacket> read() {
    std::vector<CapturedPacket> packets;
    while (next_block()) {
      if (type_ == INTERFACE) take_interface();
      if (type_ != ENHANCED_PACKET) continue;
      if (auto packet = take_packet()) packets.push_back(std::move(*packet));
    }
    return packets;
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const {
    throw CaptureError(name_ + ": byte " + std::to_string(at_) + ": " + reason);
  }
  uint32_t number(View bytes, size_t at, size_t width) const {
    if (at + width > bytes.size()) fail("a block is shorter than its fields");
    uint32_t value = 0;
    for (size_t i = 0; i < width; ++i) {
      value = value << 8 | bytes[at + (big_endian_ ? i : width - 1 - i)];
    }
    return value;
  }
  bool next_block();
  void take_interface();
  std::optional<CapturedPacket> take_packet() const;

  // The value of an option in the list that begins at at, if it is there.
  std::optional<View> option(size_t at, Option wanted) const {
    while (at + 4 <= body_.size()) {
      uint32_t code = number(body_, at, 2), length = number(body_, at + 2, 2);
      at += 4;
      if (code == END || length > body_.size() - at) break;
      if (code == wanted) return body_.subspan(at, length);
      at += padded(length);
    }
    return std::nullopt;
  }

  View file_;
  size_t next_ = 0, at_ = 0;  // where the rest in file_ begins, and the present block
  std::string name_;
  bool big_endian_ = false;
  bool in_section_ = false;
  uint32_t type_ = 0;
  View body_;
  std::vector<uint32_t> resolutions_;  // of the interfaces, as powers of ten; 0 for another link
};
}  // namespace

bool Reader::next_block() {
  at_ = next_;
  if (file_.size() < 12) return false;
  type_ = number(file_, 0, 4);
  if (type_ == SECTION) {
    big_endian_ = false;
    uint32_t order = number(file_, 8, 4);
    big_endian_ = order != ORDER_MARK;
    if (number(file_, 8, 4) != ORDER_MARK) fail("not a pcapng file");
    in_section_ = true;
    resolutions_.clear();
  }
  if (!in_section_) fail("not a pcapng file");
  uint32_t length = number(file_, 4, 4);
  if (length < 12 || length % 4 != 0) fail("a block has an impossible length");
  if (length > file_.size()) return false;  // cut
  body_ = file_.subspan(8, length - 12);
  file_ = file_.subspan(length);
  next_ += length;
  return true;
}

void Reader::take_interface() {
  uint32_t resolution = MICROSECONDS;
  if (auto value = option(8, RESOLUTION); value && !value->empty()) resolution = (*value)[0];
  constexpr uint32_t FINEST = 12;
  if (resolution > FINEST) fail("times in an unsupported unit");
  bool ours = number(body_, 0, 2) == LINK_TYPE;
  resolutions_.push_back(ours ? resolution + 1 : 0);
}

std::optional<CapturedPacket> Reader::take_packet() const {
  uint32_t interface = number(body_, 0, 4);
  if (interface >= resolutions_.size() || resolutions_[interface] == 0)
    fail("packets of another link type: not a capture of a modem's DIAG port");
  uint64_t time = uint64_t{number(body_, 4, 4)} << 32 | number(body_, 8, 4);
  uint32_t resolution = resolutions_[interface] - 1;
  for (; resolution > MICROSECONDS; --resolution) time /= 10;
  for (; resolution < MICROSECONDS; ++resolution) time = std::min(time, LATEST / 10) * 10;
  time = std::min(time, LATEST);
  uint32_t length = number(body_, 12, 4);
  if (body_.size() < 20 || length > body_.size() - 20) fail("a packet is longer than its block");
  View bytes = body_.subspan(20, length);
  auto flags = option(20 + padded(length), FLAGS);
  uint32_t direction = flags && flags->size() == 4 ? number(*flags, 0, 4) & DIRECTION_BITS : 0;
  if (direction == 0) return std::nullopt;
  return CapturedPacket{std::chrono::microseconds(time),
                        direction == CapturedPacket::FROM_MODEM ? CapturedPacket::FROM_MODEM
                                                                : CapturedPacket::TO_MODEM,
                        Bytes(bytes.begin(), bytes.end())};
}

std::vector<CapturedPacket> parse_capture(View file, const std::string& name) {
  if (file.size() < 12) throw CaptureError(name + ": not a pcapng file");
  return Reader(file, name).read();
}

std::vector<CapturedPacket> load_capture(const std::string& path) {
  if (int error = read_error(path)) throw CaptureError(path + ": " + strerror(error));
  std::ifstream file(path, std::ios::binary);
  Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return parse_capture(bytes, path);
}

}  // namespace sim
