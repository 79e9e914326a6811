// Answers that the modem still owes: those to requests that were sent and whose answer has not been
// read. An answer is recognised by the head of its request, which it echoes.
//
// Each is one atomic word without a lock: an exchange may be given up in a signal handler, or while
// a newer one is in progress.
#pragma once

#include <stdint.h>

// The first bytes of a request, up to three.
using RequestHead = uint32_t;
RequestHead head_of(const uint8_t* request, uint32_t length);

// Whether an answer belongs to a request: it starts with the head, or refuses it.
bool is_answer_to(RequestHead head, const uint8_t* answer, uint32_t length);

// Records an answer that its own exchange will not read. The ninth replaces the first.
void note_owed(RequestHead head);

bool is_any_owed();
bool is_owed(RequestHead head);

// Removes one owed answer from the list if it matches. False if none does.
bool remove_owed(const uint8_t* answer, uint32_t length);

// Clears the list. The modem answers in order, so answers that it has skipped will not come.
void forget_owed();
