// The files of a log, read and searched in pieces by several threads. Pieces come out in their
// order, whoever searched them; only a few are held at a time, however long the log.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "records/log_piece.h"

namespace records {

constexpr size_t PIECE_SIZE = 1 << 18;  // fits in a processor's cache

class LogPieces {
 public:
  // Files are read in their order; "-" is standard input. The caller of next is one of the threads,
  // and the only one that reads what may keep it waiting, as pipes and terminals.
  LogPieces(std::vector<std::string> files, unsigned threads);
  ~LogPieces();
  LogPieces(const LogPieces&) = delete;
  LogPieces& operator=(const LogPieces&) = delete;

  // The next piece, which is valid until the next call; null at the end. The last piece of a file
  // ends it; one with an error is the last of all; one may be empty, after a signal.
  const LogPiece* next();

 private:
  struct Slot {
    LogPiece piece;
    bool is_ready = false;  // searched
  };

  void work();
  Slot& slot_of(uint64_t number) { return slots_[number % slots_.size()]; }
  bool may_begin(bool is_caller) const;
  void make_piece(std::unique_lock<std::mutex>& lock);
  bool read(LogPiece& piece);
  void end_file();

  std::vector<std::string> files_;

  // Whoever sets is_reading_ has these until it is cleared.
  size_t file_ = 0;
  int fd_ = -1;  // of that file; negative when it is not open

  std::mutex mutex_;  // guards what follows; a piece that is not ready is its maker's
  std::condition_variable changed_;
  bool is_reading_ = false;
  bool is_prompt_ = false;  // the file to read next is a regular one
  bool is_over_ = false;    // nothing is left to read, or nobody wants it
  uint64_t begun_ = 0;      // pieces that were begun
  uint64_t given_ = 0;      // pieces that the caller is done with
  bool is_given_ = false;   // the caller has the next one
  std::vector<Slot> slots_;
  std::vector<std::jthread> workers_;
};

}  // namespace records
