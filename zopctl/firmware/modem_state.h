// What is known of a modem when an update ends early: the last word of the tool, its advice and its
// exit code. Nothing here is said that is only hoped for.
#pragma once

#include <string>

#include "zopctl/firmware/journal.h"

namespace zopctl {

enum class ModemState {
  UNTOUCHED,
  UNKNOWN,        // it did not answer, and nothing was written
  SWITCHING,      // it was told to switch to its download mode, and nothing was written
  DOWNLOAD_MODE,  // it is there, and nothing was written
  BROKEN_BEFORE,  // nothing was written, but an earlier update broke off while it wrote
  DOUBTFUL,       // a packet that changes it was sent, and its answer is missing
  HALF_WRITTEN,
  WRITTEN,  // the end step is left
};

enum UpdateExit { NOT_CHANGED = 1, NO_FIRMWARE = 3, NOT_STARTED = 4, OTHER_VERSION = 5 };

struct LastWord {
  UpdateExit exit_code;
  std::string fact;
  std::string advice;
};

LastWord last_word(ModemState state, const std::string& images);

// What went wrong, by the module's error line or, if it printed none, by the stage's key.
const char* meaning_of(const std::string& mark);

// An update that an earlier run began, in words.
std::string in_words(const JournalEntry& entry);

}  // namespace zopctl
