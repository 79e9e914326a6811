// The journal of an update: a small file for each port, from before the first packet that changes
// the modem until its new firmware has been read. An update that breaks off leaves it behind.
#pragma once

#include <optional>
#include <string>

namespace zopctl {

struct JournalEntry {
  std::string begun;           // UTC, like 2010-07-24T13:02:59Z
  std::string images;          // the set's folder
  std::string new_version;     // of the set; empty if it has no version_info
  std::string version_before;  // that the modem ran; empty if it was not known
  bool is_written = false;     // all images; only the end step is left
  int nv_step = 0;             // MODEM_NV_ of modem_download.h

  bool operator==(const JournalEntry&) const = default;
};

class Journal {
 public:
  // Of the modem at this port. A damaged file throws Failure.
  explicit Journal(const std::string& device);

  // What an earlier update, or this one, has begun.
  const std::optional<JournalEntry>& entry() const { return entry_; }

  // On the disk when they return. Throw Failure.
  void write(const JournalEntry& entry);
  void remove();

  // Makes sure that write can succeed. Throws Failure.
  void prepare() const;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::optional<JournalEntry> entry_;
};

}  // namespace zopctl
