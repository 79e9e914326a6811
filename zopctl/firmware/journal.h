// The journal of an update: a small file for each port, from before the modem is switched to its
// download mode until its new firmware has been read. An update that breaks off leaves it behind.
// What it says of the version before and of the NV items counts, not what the modem says: its old
// firmware may be gone, and a second backup of its NV items would overwrite the first.
#pragma once

#include <optional>
#include <string>

namespace zopctl {

struct JournalEntry {
  std::string begun;        // UTC, like 2010-07-24T13:02:59Z
  std::string images;       // the set's folder
  std::string new_version;  // of the set
  bool has_version_info = true;
  std::string version_before;  // that the NV items belong to; empty if it was not known
  bool only_switched = false;  // to the download mode: no packet that changes the modem was sent
  bool is_written = false;     // all images; only the end step is left
  int nv_step = 0;             // MODEM_NV_ of modem_download.h

  bool is_half_written() const { return !only_switched && !is_written; }
  bool has_nv_work_left() const;
  bool operator==(const JournalEntry&) const = default;
};

class Journal {
 public:
  // Of the modem at this port. A damaged file throws Failure.
  explicit Journal(const std::string& device);

  // What an earlier update, or this one, has begun.
  const std::optional<JournalEntry>& entry() const { return entry_; }

  // The entry with which the update begins: fresh, with what an earlier one has left to it.
  JournalEntry continued(JournalEntry fresh) const;

  // On the disk when they return. Throw Failure.
  void write(const JournalEntry& entry);
  void remove();

  // Makes the folder, and sees that it can be written in. Throws Failure.
  void prepare() const;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::optional<JournalEntry> entry_;
};

}  // namespace zopctl
