// Writes small files so that whoever reads them sees the old content or the new one, never a part.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace zopctl {

// On the disk when it returns; the umask applies to mode. Throws Failure, and the old file stays.
void replace_file(const std::string& path, std::string_view text, mode_t mode);

// A new file in the place of /dev/null would be no kindness. Throws Failure.
void require_file_or_none(const std::string& path);

// After a file was renamed or removed: without it a power cut may bring the old name back.
void sync_folder(const std::string& file);

}  // namespace zopctl
