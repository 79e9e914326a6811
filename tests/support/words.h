// The notation of the tests' text files: words, texts in quotes with the escapes of C, and bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace test {

using Bytes = std::vector<uint8_t>;
using Words = std::vector<std::string>;  // a text keeps its first quote

// The words of a line; an end, if one is given, separates groups of them.
std::vector<Words> word_groups(const std::string& line, const std::string& end);

std::string text_of(const std::string& word);  // without its quote, if it has one
uint32_t number_of(const std::string& word);   // decimal, or hexadecimal after 0x

// Bytes: hexadecimal (0a), repeated (ff*20), counting (01..14), texts, little-endian numbers (16:-5
// or 32:300), and zeros up to a size (@90).
Bytes bytes_of(std::span<const std::string> words);
Bytes hex(const std::string& line);  // its words

// Hexadecimal bytes; in short, long runs of the same one are counted.
std::string to_hex(std::span<const uint8_t> bytes);
std::string short_hex(std::span<const uint8_t> bytes);

// Without control characters.
std::string in_quotes(const std::string& text);

// Each part with the end; repeated ones are counted.
std::string joined(const std::vector<std::string>& parts, const std::string& end);

}  // namespace test
