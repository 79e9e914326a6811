// "1 line", "2 lines"
#pragma once

#include "records/counted.h"

namespace zopctl {
using records::counted;
}  // namespace zopctl
