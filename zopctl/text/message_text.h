// Phone numbers, and texts of messages as the modem takes them: with a byte for each character. The
// request has no place for a coding, so that the only texts that are the same to every modem are
// those of ASCII characters that the GSM 7-bit default alphabet has too.
#pragma once

#include <string>

namespace zopctl {

// The number itself: up to most characters, those given and a + before them. Throws UsageError.
const std::string& phone_number(const std::string& number, const char* characters, size_t most);

// How many septets the network needs for a text; characters of the extension table take two. Throws
// UsageError, naming the character, for a text that the modem can't be given.
size_t septets_of(const std::string& text);

}  // namespace zopctl
