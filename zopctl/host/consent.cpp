// The question goes to standard error: standard output may be a file.
#include "zopctl/host/consent.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"

namespace zopctl {

bool is_person_there() { return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0; }

void ask_consent(const std::string& danger) {
  fprintf(stderr, "Caution: %s.\nType yes to go on: ", printable(danger).c_str());
  char answer[16] = "";
  if (fgets(answer, sizeof answer, stdin) == nullptr) fputs("\n", stderr);
  check_signals();
  if (strcmp(answer, "yes\n") != 0)
    throw Failure("not confirmed, nothing was changed; yes must be typed in full");
}

}  // namespace zopctl
