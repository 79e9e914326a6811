// The packets that show progress. The boot ROM's are big-endian, the programmer's little-endian. A
// damaged region list is not reported here: the module refuses it.
#include "zopctl/firmware/line_follower.h"

#include <fmt/format.h>

#include <algorithm>

#include "zopctl/text/bytes_text.h"
#include "zopctl/text/printable.h"

namespace zopctl {

enum : uint8_t {
  STREAM_WRITE = 0x07,  // a single byte is a boot ROM request instead
  DMSS_WRITE = 0x0F,
  REGION_LIST = 0x11,
  MEMORY_READ = 0x12,
  PARTITION_TABLE = 0x19,
  OPEN_IMAGE = 0x1B,
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

std::optional<Amount> DownloadFollower::to_modem(sim::View piece) {
  std::optional<Amount> amount;
  for_each_packet(deframer_, piece, [&](sim::View packet) {
    if (auto changed = follow(packet)) amount = changed;
  });
  return amount;
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
      if (packet.size() > 1 && packet[1] != 0) writing_ = true;  // erases the file system
      if (part_ != "partition.mbn") before_part_ += part_done_;
      part_ = "partition.mbn";
      return reached(packet.size() - 2);
    case OPEN_IMAGE: {
      writing_ = true;
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

// Reads the terminated text at offset at, and moves at past it. Nothing if it has no terminator.
static std::optional<std::string> take_text(sim::View list, size_t& at) {
  auto start = list.begin() + static_cast<ptrdiff_t>(at);
  auto end = std::find(start, list.end(), 0);
  if (end == list.end()) return std::nullopt;
  at += static_cast<size_t>(end - start) + 1;
  return printable(std::vector<uint8_t>(start, end));
}

static std::vector<DumpRegion> regions_in(sim::View packet) {
  std::vector<DumpRegion> regions;
  constexpr size_t LIST = 3, TEXTS = 9;
  size_t size = packet.size() < LIST ? 0 : std::min<size_t>(packet.size(), LIST + be16(packet, 1));
  sim::View list = packet.first(size);
  for (size_t at = LIST; at + TEXTS < list.size();) {
    uint32_t base = be32(list, at + 1), length = be32(list, at + 5);
    at += TEXTS;
    auto description = take_text(list, at);
    auto name = take_text(list, at);
    if (!description || !name) break;
    regions.push_back({*name, base, length});
  }
  return regions;
}

void DumpFollower::from_modem(sim::View piece) {
  for_each_packet(answers_, piece, [&](sim::View packet) {
    if (packet[0] == REGION_LIST && announced_ == 0) listed_ = regions_in(packet);
  });
}

void DumpFollower::save_next() {
  if (announced_ >= listed_.size()) return;
  total_ += listed_[announced_].length;
  regions_.push_back(listed_[announced_++]);
}

Amount DumpFollower::all_saved() const {
  uint64_t last = regions_.empty() ? 0 : regions_.back().length;
  return {regions_.empty() ? "" : regions_.back().name, last, last, total_, total_};
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
    bool follows = offset >= offset_ && offset <= offset_ + MAX_READ_SIZE && offset < region.length;
    if (follows) {
      offset_ = offset;
      std::string part = fmt::format("{} ({} of {})", region.name, current_ + 1, regions_.size());
      return Amount{part, offset, region.length, before_ + offset, total_};
    }
    before_ += region.length;
  }
  return std::nullopt;
}

}  // namespace zopctl
