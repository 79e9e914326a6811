// Where the secrets are in requests and answers. An answer begins like its request, and some modems
// echo a request as it is, so that a row holds for both; an error answer is a code and the request.
// What no row names, and an item that is not known to be harmless, is blanked.
#include "zopctl/host/redaction.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "simulator/requests/requests.h"
#include "zopctl/text/nv_items.h"

namespace zopctl {

using sim::Bytes;
using sim::FLAG;
using sim::View;
using namespace std::string_view_literals;

enum : uint8_t {
  ESN = 0x01,
  NV_READ = 0x26,
  NV_WRITE = 0x27,
  VENDOR = 0xCF,
  SMS = 0xD0,
  SIM = 0xD2,
  VIRTUAL_SIM = 0xD5,
};
constexpr int ANY = -1;
constexpr size_t REST = SIZE_MAX;
constexpr uint8_t BLANK = '0';

namespace {
struct Rule {
  uint8_t command;
  int subcommand;  // the second byte
  size_t at, length;
};
// Commands with an empty text have no subcommand.
struct Harmless {
  uint8_t command;
  std::string_view subcommands;
};
// A packet of the boot ROM or the programmer, and how many bytes of it hold no memory.
struct Packet {
  uint8_t code;
  size_t kept;
};
}  // namespace

// clang-format off
constexpr Rule RULES[] = {
    {ESN, ANY, 1, 4},
    {NV_READ, ANY, 3, 128},   // unless the item is harmless
    {NV_WRITE, ANY, 3, 128},
    {SMS, ANY, 4, REST},      // number, text and their lengths
    {SIM, 1, 11, REST},       // PINs and keys
    {SIM, 2, 11, REST},
    {SIM, 3, 11, REST},
    {SIM, 4, 11, REST},
    {SIM, 5, 11, REST},
    {VENDOR, 0x07, 5, REST},  // phone number
    {VENDOR, 0x1B, 4, REST},  // a profile is written: its layout is the modem's, a password anywhere
    {VENDOR, 'F', 6, REST},   // and read
    {VENDOR, '#', 5, REST},   // ICCID
    {VENDOR, 'g', 5, REST},   // IMEI
    {VENDOR, 'h', 5, REST},   // IMSI
    {VENDOR, 'c', 4, REST},   // the called number
    {VENDOR, '>', 7, REST},   // the same, in an event
    {VENDOR, '?', 32, 20},    // the address in the packet network
    {VENDOR, 'K', 9, REST},   // a file of the SIM
    {VENDOR, '/', 5, REST},   // routing area
    {VENDOR, '2', 5, REST},   // location area
    {VENDOR, '3', 5, REST},   // cell
    {VENDOR, '-', 9, REST},   // cells around
    {VENDOR, '4', 40, 16},    // a screen: IMEI,
    {VENDOR, '4', 56, 16},    // IMSI,
    {VENDOR, '4', 76, 4},     // cell,
    {VENDOR, '4', 87, 8},     // location and routing area
};

// Networks are named by country and operator alone, which identify nobody.
constexpr Harmless HARMLESS[] = {
    {0x00, ""},  // version
    {0x1D, ""},  // timestamp
    {0x29, ""},  // mode
    {0x2A, ""},  // error log: read,
    {0x2B, ""},  // cleared
    {0x3A, ""},  // download mode
    {0x7C, ""},  // build
    {0xD6, ""},  // NV backup: made,
    {0xD7, ""},  // restored,
    {0xD8, ""},  // begun,
    {0xD9, ""},  // ended
    {0xDA, ""},  // NV items rebuilt
    {SIM, "\0"sv},
    {VIRTUAL_SIM, "("},
    {VENDOR, "_`abijkl"},             // lists of networks
    {VENDOR, "BCDEILMp"},             // configuration
    {VENDOR, "d=@A"},                 // calls
    {VENDOR, "HJ]"},                  // versions
    {VENDOR, "\x13\x14!\"01:;<o"},    // network, its time
    {VENDOR, "\x1F $%QUYZ^'()*+,9"},  // radio
    {VENDOR, "&RSTVWXefmn"},          // states
};
// clang-format on

// What a host sends to the boot ROM and to the programmer is firmware, and what they are to do.
constexpr uint8_t DOWNLOAD_REQUESTS[] = {0x01, 0x05, 0x06, 0x07, 0x0B, 0x0F,
                                         0x10, 0x12, 0x15, 0x17, 0x19, 0x1B};
constexpr Packet DOWNLOAD_ANSWERS[] = {{0x02, REST}, {0x03, REST}, {0x08, REST}, {0x0C, 1},
                                       {0x0D, REST}, {0x0E, REST}, {0x11, REST}, {0x13, 7},
                                       {0x16, 1},    {0x18, 2},    {0x1A, 2},    {0x1C, 2}};

// A GSM screen ends in the cells around, six of nine bytes.
constexpr size_t SCREEN_MODE = 5, SCREEN_CELLS = 294, CELL_SIZE = 9, CELLS = 6;

// Zeros at the end stay: they pad texts.
static void blank_range(std::span<uint8_t> bytes, size_t at, size_t length) {
  if (at >= bytes.size()) return;
  std::span<uint8_t> range = bytes.subspan(at, std::min(length, bytes.size() - at));
  auto is_set = [](uint8_t byte) { return byte != 0; };
  auto end = std::find_if(range.rbegin(), range.rend(), is_set).base();
  std::fill(range.begin(), end, BLANK);
}

static bool is_harmless(View payload) {
  uint8_t subcommand = payload.size() > 1 ? payload[1] : uint8_t{0};
  return std::ranges::any_of(HARMLESS, [&](const Harmless& row) {
    bool named = row.subcommands.empty() ||
                 row.subcommands.find(static_cast<char>(subcommand)) != std::string_view::npos;
    return row.command == payload[0] && named;
  });
}

static bool is_harmless_item(View payload) {
  bool is_item = payload[0] == NV_READ || payload[0] == NV_WRITE;
  if (!is_item || payload.size() < 3) return false;
  int item = payload[1] | payload[2] << 8;
  return std::ranges::any_of(
      KNOWN_NV_ITEMS, [&](const KnownNvItem& row) { return row.number == item && !row.secret; });
}

// What is not certain to be a screen of WCDMA is taken for one of GSM.
static void blank_screen_cells(std::span<uint8_t> payload) {
  bool screen = payload[0] == VENDOR && payload.size() > SCREEN_MODE && payload[1] == '4';
  if (!screen || payload[SCREEN_MODE] == ZOP_SYSTEM_WCDMA) return;
  blank_range(payload, SCREEN_CELLS, CELL_SIZE * CELLS);
}

static bool applies(const Rule& rule, View payload) {
  if (payload[0] != rule.command) return false;
  return rule.subcommand == ANY || (payload.size() > 1 && payload[1] == rule.subcommand);
}

static void blank_secrets(std::span<uint8_t> payload) {
  if (!payload.empty() && sim::error_text(payload[0]) != nullptr) payload = payload.subspan(1);
  if (payload.empty() || is_harmless(payload) || is_harmless_item(payload)) return;
  bool known = false;
  for (const Rule& rule : RULES) {
    if (!applies(rule, payload)) continue;
    known = true;
    blank_range(payload, rule.at, rule.length);
  }
  if (!known) blank_range(payload, 1, REST);
  blank_screen_cells(payload);
}

static bool is_download_request(View wire, View payload) {
  return wire.front() == FLAG &&
         std::ranges::find(DOWNLOAD_REQUESTS, payload[0]) != std::end(DOWNLOAD_REQUESTS);
}

static void blank_download_answer(std::span<uint8_t> payload) {
  auto packet = std::ranges::find(DOWNLOAD_ANSWERS, payload[0], &Packet::code);
  if (packet == std::end(DOWNLOAD_ANSWERS)) return blank_secrets(payload);
  blank_range(payload, packet->kept, REST);
}

Bytes Redaction::blank(const sim::CapturedPacket& packet) {
  sim::Deframer deframer;
  auto verdict = sim::Deframer::PENDING;
  for (uint8_t byte : packet.bytes) verdict = deframer.take(byte);
  if (verdict != sim::Deframer::GOOD) {
    Bytes blanked = packet.bytes;
    for (uint8_t& byte : blanked) byte = byte == FLAG ? FLAG : BLANK;
    return blanked;
  }
  Bytes payload = deframer.payload();
  bool from_host = packet.direction == sim::CapturedPacket::TO_MODEM;
  if (from_host) downloads_ = is_download_request(packet.bytes, payload);
  if (!downloads_) blank_secrets(payload);
  if (downloads_ && !from_host) blank_download_answer(payload);
  Bytes wire = sim::frame(payload);
  if (packet.bytes.front() == FLAG) wire.insert(wire.begin(), FLAG);
  return wire;
}

}  // namespace zopctl
