// HDLC-like frames of the modem's diagnostic port (RFC 1662): payload, CRC-16/X.25 low byte first,
// 0x7D and 0x7E stuffed, closing flag 0x7E.
//
// The module-wide buffers hold the last frame built and the last answer decoded. Both belong to the
// holder of the module's lock, the transmit buffer once the port is claimed.
#pragma once

#include <stdint.h>

#include "link/serial_port.h"

enum {
  FRAME_BUFFER_SIZE = 5000,
  MIN_FRAME_LENGTH = 3,      // shortest input that is decoded, closing flag not counted
  MAX_FRAME_PAYLOAD = 2497,  // longest payload whose frame fits with every byte stuffed
  MAX_UNLOCKED_REQUEST = 16,
};

extern uint8_t m_pTxBuf[FRAME_BUFFER_SIZE];       // last frame built
extern int32_t m_nTxLen;                          // its length
extern uint8_t m_pRxDataBufs[FRAME_BUFFER_SIZE];  // last answer, unstuffed
extern uint8_t* m_pRxData;                        // its start
extern int32_t m_nRxLen;                          // its length without the check bytes

// Frames data and writes it to the port, with a flag in front when leading_flag is not 0.
// Frame length; PORT_ERROR when the port failed or length passes MAX_FRAME_PAYLOAD; 0 when the
// frame could not be written whole.
int32_t DiagPacketTXCRC(const uint8_t* data, uint32_t length, int32_t leading_flag);

// As DiagPacketTXCRC, for an exchange that reads its answer from the same port.
int32_t send_frame(const PortUse& port, const uint8_t* data, uint32_t length, int32_t leading_flag);

// A short request of a thread without the module's lock. It is framed on the thread's own stack: an
// open of the link frees the claims of all, and m_pTxBuf may be another sender's before the last
// byte is written. Results of write_claimed; PORT_ERROR for more than MAX_UNLOCKED_REQUEST bytes.
int32_t send_request(const PortUse& port, const uint8_t* data, uint32_t length);

// The same for a sender that holds the claim on the port already.
int32_t send_claimed_request(const PortUse& port, const uint8_t* data, uint32_t length);

// Checks and unstuffs one answer in place. length counts the bytes between the flags.
// 0 when the check sequence is good; -1 otherwise, with the buffer as it was.
int32_t DiagPacketRXCRC(uint8_t* buffer, uint32_t length);

// The codec without the module-wide buffers. frame holds 2 * (length + 2) + 2 bytes; returns the
// bytes written.
uint32_t encode_frame(uint8_t* frame, const uint8_t* data, uint32_t length, bool leading_flag);

// As DiagPacketRXCRC, with a scratch buffer of the caller's own and the answer's length in
// *payload_length.
int32_t decode_frame(uint8_t* buffer, uint32_t length, uint8_t* scratch, int32_t* payload_length);
