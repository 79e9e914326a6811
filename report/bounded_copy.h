// Bounded text copy for the fields of the diagnostic record.
#pragma once

// Copies source_length characters (all of source when negative) into destination of size bytes and
// terminates. Returns the bytes written with the terminator, or, when it had to truncate, the
// bitwise complement of source_length.
int prv_strmaxcpy(char* destination, const char* source, unsigned size, int source_length);
