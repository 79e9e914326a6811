// The packets that show progress, and the answers that say what the modem has taken. The boot ROM's
// are big-endian, the programmer's little-endian.
#include "zopctl/firmware/line_follower.h"

#include <fmt/format.h>

#include <algorithm>

#include "zopctl/text/bytes_text.h"
#include "zopctl/text/printable.h"

namespace zopctl {

enum : uint8_t {
  STREAM_WRITE = 0x07,  // a single byte is a boot ROM request instead
  RESET = 0x0B,
  DMSS_WRITE = 0x0F,
  REGION_REQUEST = 0x10,
  MEMORY_READ = 0x12,
  PARTITION_TABLE = 0x19,
  OPEN_IMAGE = 0x1B,
};
enum : uint8_t {  // answers
  DMSS_NAK = 0x03,
  STREAM_ERROR = 0x0D,
  REGION_LIST = 0x11,
  MEMORY = 0x13,  // in diagnostic mode: a bad command
  PARTITION_ANSWER = 0x1A,
  OPENED = 0x1C,
};
constexpr uint32_t RAM_ADDRESS = 0x00800028;

static uint32_t be16(sim::View p, size_t at) {
  return static_cast<uint32_t>(p[at] << 8 | p[at + 1]);
}
static uint32_t be32(sim::View p, size_t at) { return be16(p, at) << 16 | be16(p, at + 2); }
static uint32_t le32(sim::View p, size_t at) {
  return le16(&p[at]) | static_cast<uint32_t>(le16(&p[at + 2])) << 16;
}

// Calls take with the payload of each packet that piece completes.
template <typename Take>
static void for_each_packet(sim::Deframer& deframer, sim::View piece, Take take) {
  for (uint8_t byte : piece) {
    bool whole = deframer.take(byte) == sim::Deframer::GOOD;
    if (whole && !deframer.payload().empty()) take(sim::View(deframer.payload()));
  }
}

static sim::Bytes packet_in(sim::View piece) {
  sim::Deframer deframer;
  sim::Bytes found;
  for_each_packet(deframer, piece,
                  [&](sim::View packet) { found.assign(packet.begin(), packet.end()); });
  return found;
}

// A refusal of the boot ROM: the reasons of the DMSS download protocol.
static std::string nak_text(sim::View answer) {
  static const char* const REASONS[] = {"",           "bad check sequence", "bad address",
                                        "bad length", "unexpected end",     "too large",
                                        "bad command"};
  uint32_t reason = answer.size() >= 3 ? be16(answer, 1) : 0;
  bool known = reason > 0 && reason < std::size(REASONS);
  return known ? REASONS[reason] : fmt::format("reason {}", reason);
}

// ---- download ----

static const char* image_of_type(uint8_t type) {
  switch (type) {
    case 5:
      return "amss.mbn";
    case 15:
      return "dbl.mbn";
    case 16:
      return "osbl.mbn";
    case 17:
      return "fsbl.mbn";
    default:
      return "?";
  }
}

DownloadFollower::DownloadFollower(const ImageSet& set, bool modem_only)
    : set_(set), part_("QSC6270.ram"), total_(set.bytes_to_send(modem_only)) {}

static bool is_override(sim::View packet) {
  return packet.size() > 1 && packet[0] == PARTITION_TABLE && packet[1] != 0;
}
static bool changes(sim::View packet) {
  return is_override(packet) || (!packet.empty() && packet[0] == OPEN_IMAGE);
}
static bool is_reset(sim::View packet) { return packet.size() == 1 && packet[0] == RESET; }
bool DownloadFollower::changes_flash(sim::View piece) { return changes(packet_in(piece)); }
bool DownloadFollower::overrides_partition(sim::View piece) {
  return is_override(packet_in(piece));
}

bool DownloadFollower::ends_writing(sim::View piece) const {
  return flash_ == CHANGED && is_reset(packet_in(piece));
}

std::optional<Amount> DownloadFollower::to_modem(sim::View piece) {
  std::optional<Amount> amount;
  for_each_packet(deframer_, piece, [&](sim::View packet) {
    tries_ = std::ranges::equal(packet, request_) ? tries_ + 1 : 1;
    request_.assign(packet.begin(), packet.end());
    if (changes(packet) && flash_ == UNCHANGED) flash_ = DOUBTFUL;
    if (is_reset(packet) && flash_ == CHANGED) flash_ = WRITTEN;
    if (auto changed = follow(packet)) amount = changed;
  });
  return amount;
}

void DownloadFollower::from_modem(sim::View piece) {
  for_each_packet(answers_, piece, [&](sim::View answer) { take_answer(answer); });
}

static std::string request_text(sim::View request) {
  if (request.size() >= 7 && request[0] == DMSS_WRITE)
    return fmt::format("the write to {:#010x}", be32(request, 1));
  return fmt::format("the request {:#04x}", request.empty() ? 0 : request[0]);
}

void DownloadFollower::take_answer(sim::View answer) {
  bool status = answer[0] == OPENED || answer[0] == PARTITION_ANSWER;
  bool refused = answer[0] == DMSS_NAK || answer[0] == STREAM_ERROR ||
                 (status && answer.size() > 1 && answer[1] != 0);
  if (refused) {
    refusal_ = request_text(request_);
    if (answer[0] == DMSS_NAK) refusal_ += ", " + nak_text(answer);
    return;
  }
  refusal_.clear();
  tries_ = 0;
  if (status && flash_ == DOUBTFUL && changes(request_)) flash_ = CHANGED;
}

std::optional<Amount> DownloadFollower::reached(uint64_t part_done) {
  part_done_ = part_done;
  return Amount{part_, part_done_, set_.size_of(part_), before_part_ + part_done_, total_};
}

std::optional<Amount> DownloadFollower::follow(sim::View packet) {
  switch (packet[0]) {
    case DMSS_WRITE:
      if (packet.size() < 7) return std::nullopt;
      return reached(be32(packet, 1) - RAM_ADDRESS + packet.size() - 7);
    case PARTITION_TABLE:
      if (part_ != "partition.mbn") before_part_ += part_done_;
      part_ = "partition.mbn";
      return reached(packet.size() - 2);
    case OPEN_IMAGE: {
      if (packet.size() < 2) return std::nullopt;
      const char* name = image_of_type(packet[1]);
      if (part_ == name) return reached(0);  // a retry
      before_part_ += part_done_;
      part_ = name;
      if (packet[1] == 15) total_ = set_.bytes_to_send(false);  // the boot loaders are sent too
      return reached(0);
    }
    case STREAM_WRITE:
      if (packet.size() < 6) return std::nullopt;
      return reached(le32(packet, 1) + packet.size() - 5);
    default:
      return std::nullopt;
  }
}

// ---- dump ----

Amount DumpFollower::all_saved() const { return {label_, 1, 1, total_, total_}; }

void DumpFollower::from_modem(sim::View piece) {
  for_each_packet(answers_, piece, [&](sim::View answer) {
    bool diagnostic = answer[0] == MEMORY && answer.size() == 2 && answer[1] == REGION_REQUEST;
    if (answer[0] == REGION_LIST) answer_ = REGIONS;
    if (answer_ == NOTHING) answer_ = diagnostic ? RUNS : REFUSED;
    refusal_ = answer[0] == DMSS_NAK ? nak_text(answer) : "";
  });
}

std::optional<Amount> DumpFollower::to_modem(sim::View piece) {
  std::optional<Amount> amount;
  for_each_packet(requests_, piece, [&](sim::View packet) {
    if (packet[0] == MEMORY_READ && packet.size() == 7) amount = asked_for(be32(packet, 1));
  });
  return amount;
}

// Regions are read in order and may overlap: a request belongs to the first that it continues.
std::optional<Amount> DumpFollower::asked_for(uint32_t address) {
  constexpr uint64_t MAX_READ_SIZE = 1024;
  for (; current_ < regions_.size(); ++current_, offset_ = 0) {
    const DumpRegion& region = regions_[current_];
    uint64_t offset = uint32_t{address - region.base};
    uint64_t reached = std::max<uint64_t>(offset_, region.done);
    bool follows = offset >= reached && offset <= reached + MAX_READ_SIZE && offset < region.length;
    if (follows) {
      offset_ = offset;
      label_ = region.label;
      return Amount{label_, offset, region.length, before_ + offset, total_};
    }
    before_ += region.length;
  }
  return std::nullopt;
}

}  // namespace zopctl
