// The files of a log in pieces, which several threads work on: pieces are read one after the other,
// searched, joined to reports, formed and taken. Joining and taking happen in the log's order,
// whoever did the rest; only a few pieces are held at a time, however long the log.
#pragma once

#include <condition_variable>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "records/log_piece.h"

namespace records {

constexpr size_t PIECE_SIZE = 1 << 18;  // fits in a processor's cache

struct LogFile {
  std::string name;  // "-" is standard input
  int fd = -1;       // where reading begins, and the caller's; negative: the file is opened
};

// What is done with each piece. A place is the piece's from join to take: what it needs there is no
// other thread's meanwhile.
class LogWork {
 public:
  LogWork() = default;
  virtual ~LogWork() = default;
  LogWork(const LogWork&) = delete;
  LogWork& operator=(const LogWork&) = delete;

  // In order, by any thread, and one at a time.
  virtual void join(const LogPiece& piece, size_t place) = 0;
  // Then by any thread.
  virtual void form(size_t place) = 0;
  // In order, by the thread that runs.
  virtual void take(const LogPiece& piece, size_t place) = 0;
};

class LogPieces {
 public:
  // The caller of run is one of the threads, and the only one that reads what may keep it waiting,
  // as pipes and terminals.
  LogPieces(std::vector<LogFile> files, unsigned threads, LogWork& work);
  ~LogPieces();
  LogPieces(const LogPieces&) = delete;
  LogPieces& operator=(const LogPieces&) = delete;

  static size_t places(unsigned threads) { return PIECES_PER_THREAD * threads; }

  // Until the files end. The last piece of a file ends it; one with an error is the last of all;
  // one may be empty, after a signal. What the work throws comes out of here, and is the end.
  void run();

 private:
  static constexpr size_t PIECES_PER_THREAD = 4;
  using Lock = std::unique_lock<std::mutex>;
  struct Slot {
    LogPiece piece;
    bool is_searched = false, is_formed = false;
    std::exception_ptr fault;  // of joining or forming
  };

  void help();
  size_t place_of(uint64_t number) const { return static_cast<size_t>(number % slots_.size()); }
  Slot& slot_of(uint64_t number) { return slots_[place_of(number)]; }
  bool may_read(bool is_caller) const;
  bool may_join();
  bool may_form() const { return formed_ < joined_ && !is_over_; }
  bool take_next(Lock& lock);
  void join_next(Lock& lock);
  void form_next(Lock& lock);
  void read_next(Lock& lock);
  bool read(LogPiece& piece);
  void end_file();

  std::vector<LogFile> files_;
  LogWork& work_;

  // Whoever sets is_reading_ has these until it is cleared.
  size_t file_ = 0;
  int fd_ = -1;  // of that file; negative when it is not open

  std::mutex mutex_;  // guards what follows; a piece in work is its thread's
  std::condition_variable changed_;
  bool is_reading_ = false, is_joining_ = false;
  bool is_prompt_ = false;  // the file to read next is a regular one
  bool is_read_ = false;    // nothing is left to read
  bool is_over_ = false;    // nobody wants more
  // How many pieces were begun to be read, joined, begun to be formed, and taken.
  uint64_t begun_ = 0, joined_ = 0, formed_ = 0, taken_ = 0;
  std::vector<Slot> slots_;
  std::vector<std::jthread> workers_;
};

}  // namespace records
