// Whether the file is read or written is not known here: the advice fits both.
#include "records/file_error.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace records {

namespace {
struct Row {
  int error;
  const char* advice;
};
}  // namespace
static constexpr Row ROWS[] = {
    {ENOENT, "check its name, and whether its folder exists"},
    {ENOTDIR, "a part of its path is a file: check its name"},
    {EISDIR, "name a file, not its folder"},
    {EACCES, "see ls -l: run as a user who may use it, or name another"},
    {EPERM, "see ls -l and lsattr: run as a user who may use it, or name another"},
    {EROFS, "name one on a disk that can be written"},
    {ENOSPC, "free some space, or name one on another disk"},
    {EDQUOT, "free some space, or name one on another disk"},
    {EFBIG, "name one on a file system that takes so large files; ulimit -f may forbid them"},
    {EEXIST, "name another, or remove it first"},
    {ELOOP, "it is a link, or links that lead nowhere: name the file behind it"},
    {ENAMETOOLONG, "give it a shorter name"},
    {EBUSY, "end the program that uses it"},
    {ETXTBSY, "end the program that uses it"},
    {EMFILE, "too many files are open: see ulimit -n"},
    {ENFILE, "too many files are open: end other programs"},
    {EPIPE, "the program that reads it has ended: see why"},
    {EIO, "its disk may be failing: save what is on it, and name one on another"},
};

const char* advice_after(int error) {
  for (const Row& row : ROWS)
    if (row.error == error) return row.advice;
  return "name another file, or one on another disk";
}

int read_error(const std::string& path) {
  std::error_code error;
  if (access(path.c_str(), R_OK) != 0) return errno;
  return std::filesystem::is_directory(path, error) ? EISDIR : 0;
}

Failure file_failure(const std::string& what, int error) {
  return Failure(what + ": " + strerror(error), advice_after(error));
}

}  // namespace records
