// Texts of the record.
#pragma once

#include <stddef.h>

// Bytes from text to the end of its field of gDiagInfo; elsewhere in the record to the record's
// end. A text outside of it ends with its zero.
size_t prv_text_room(const char* text);
