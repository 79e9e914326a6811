// Reads arbitrary files as recordings: each is refused with file and line, or gives recordings
// whose moments are in order and do not overlap.
#include "fuzz/fuzz.h"
#include "records/recording_reader.h"

static const records::Callbacks CALLBACKS = {[] {}, [](const std::string&) {}};

void fuzz(std::span<const uint8_t> input) {
  if (input.empty()) return;
  FILE* file = fmemopen(const_cast<uint8_t*>(input.data()), input.size(), "r");
  try {
    for (const auto& recording : records::read_recordings(file, "fuzz", CALLBACKS)) {
      int64_t end = std::numeric_limits<int64_t>::min();
      for (const records::Moment& moment : recording.moments) {
        require(end <= moment.time && moment.time <= moment.end);
        end = moment.end;
      }
    }
  } catch (const records::Failure& failure) {
    require(std::string_view(failure.what()).starts_with("fuzz:"));
  }
}
