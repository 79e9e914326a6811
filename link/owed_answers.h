// Answers that the modem still owes: of requests that went out and whose answer nobody has read. An
// answer is told by the head that it echoes, the first bytes of its request.
//
// A word each, without a lock: whoever gives up an exchange notes it, also beside a newer exchange
// and in a signal handler.
#pragma once

#include <stdint.h>

// Up to three first bytes of a request.
using RequestHead = uint32_t;
RequestHead head_of(const uint8_t* request, uint32_t length);

// Whether an answer belongs to a request: it begins with its head, or refuses it.
bool is_answer_to(RequestHead head, const uint8_t* answer, uint32_t length);

// Notes an answer that will not be read by its own exchange. The ninth takes the place of the
// first.
void note_owed(RequestHead head);

bool is_any_owed();
bool is_owed(RequestHead head);

// Takes one owed answer off the list when this is it.
bool remove_owed(const uint8_t* answer, uint32_t length);

// The modem answers in order: what it has skipped does not come any more.
void forget_owed();
