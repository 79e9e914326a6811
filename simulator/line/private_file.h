// Files that hold what went over the line: PINs and identities. Only their owner may read them.
#pragma once

#include <string>

namespace sim {

// Empties or makes a file of mode 0600, whatever the umask and the mode before; what is no ordinary
// file keeps its mode. Returns the descriptor, or -1 with errno.
int make_private_file(const std::string& path);

// Why a file can't be read, as an errno; 0 when it can. Streams open folders.
int read_error(const std::string& path);

}  // namespace sim
