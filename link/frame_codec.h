// HDLC-like frames of the modem's diagnostic port (RFC 1662): payload, CRC-16/X.25 low byte first,
// 0x7D and 0x7E stuffed, closing flag 0x7E.
//
// The module-wide buffers are the download's, which uses the port alone; exchanges have their own.
#pragma once

#include <stdint.h>

enum {
  FRAME_BUFFER_SIZE = 5000,
  MIN_FRAME_LENGTH = 3,      // shortest input that is decoded, closing flag not counted
  MAX_FRAME_PAYLOAD = 2497,  // longest payload whose frame fits with every byte stuffed
};

extern uint8_t m_pTxBuf[FRAME_BUFFER_SIZE];       // last frame built
extern uint8_t m_pRxDataBufs[FRAME_BUFFER_SIZE];  // last answer, unstuffed
extern int32_t m_nRxLen;                          // its length without the check bytes

// Frames data and writes it to the port, with a flag in front when leading_flag is not 0.
// Frame length; PORT_ERROR when the port failed or length passes MAX_FRAME_PAYLOAD; 0 when the
// frame could not be written whole.
int32_t DiagPacketTXCRC(const uint8_t* data, uint32_t length, int32_t leading_flag);

// Checks and unstuffs one answer in place. length counts the bytes between the flags.
// 0 when the check sequence is good; -1 otherwise, with the buffer as it was.
int32_t DiagPacketRXCRC(uint8_t* buffer, uint32_t length);

// The codec without the module-wide buffers. frame holds 2 * (length + 2) + 2 bytes; returns the
// bytes written.
uint32_t encode_frame(uint8_t* frame, const uint8_t* data, uint32_t length, bool leading_flag);

// Checks and unstuffs length bytes of frame into payload, which holds as many. 0 when the check
// sequence is good, else -1. *payload_length is set whenever length is in range.
int32_t decode_frame(const uint8_t* frame, uint32_t length, uint8_t* payload,
                     int32_t* payload_length);
