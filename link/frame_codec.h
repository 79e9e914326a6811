// HDLC-like frames of the modem's diagnostic port (RFC 1662): payload, CRC-16/X.25 low byte first,
// 0x7D and 0x7E stuffed, closing flag 0x7E.
//
// Only a download uses the module-wide buffers, and it has the port to itself; exchanges have their
// own.
#pragma once

#include <stdint.h>

enum : uint8_t { FRAME_FLAG = 0x7E, FRAME_ESCAPE = 0x7D };
enum {
  FRAME_BUFFER_SIZE = 5000,
  MIN_FRAME_LENGTH = 3,      // shortest input that is decoded, closing flag not counted
  MAX_FRAME_PAYLOAD = 2497,  // longest payload whose frame fits with every byte stuffed
};

// One buffer by two names: a frame has been sent when its answer is unstuffed.
extern uint8_t m_pTxBuf[FRAME_BUFFER_SIZE];                               // last frame built
inline constexpr uint8_t (&m_pRxDataBufs)[FRAME_BUFFER_SIZE] = m_pTxBuf;  // last answer, unstuffed
extern int32_t m_nRxLen;  // its length without the check bytes

// Frames data and writes it to the port, with a leading flag if leading_flag is not 0. Returns the
// frame's length; PORT_ERROR if the port fails or length exceeds MAX_FRAME_PAYLOAD; 0 if the frame
// was written only in part.
int32_t DiagPacketTXCRC(const uint8_t* data, uint32_t length, int32_t leading_flag);

// Checks and unstuffs one answer in place. length counts the bytes between the flags.
// 0 if the check sequence is good; otherwise -1, and the buffer is unchanged.
int32_t DiagPacketRXCRC(uint8_t* buffer, uint32_t length);

// The codec without the module-wide buffers. frame holds 2 * (length + 2) + 2 bytes; returns the
// bytes written.
uint32_t encode_frame(uint8_t* frame, const uint8_t* data, uint32_t length, bool leading_flag);

// Checks and unstuffs length bytes of frame into payload, which has room for as many. 0 if the
// check sequence is good, otherwise -1. *payload_length is set whenever length is in range.
int32_t decode_frame(const uint8_t* frame, uint32_t length, uint8_t* payload,
                     int32_t* payload_length);
