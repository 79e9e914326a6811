// Sends a command of a download protocol and reads its reply.
#include "download/command_table.h"

#include <unistd.h>

#include "download/image_set.h"
#include "link/frame_codec.h"
#include "link/serial_port.h"

bool receive_reply(const DownloadCommand& command, uint32_t pause_us) {
  int32_t received = dload_read(dload_rbuf);
  if (pause_us > 0) usleep(pause_us);
  if (received <= 0) return false;
  uint8_t* frame = dload_rbuf;
  uint32_t length = static_cast<uint32_t>(received);
  if (frame[0] == FRAME_FLAG) {
    ++frame;
    --length;
  }
  if (length == 0 || DiagPacketRXCRC(frame, length - 1) != 0) return false;
  if (m_nRxLen < 1 || frame[0] != command.reply) return false;
  Reply reply = {frame, static_cast<uint32_t>(m_nRxLen)};
  return command.accept == nullptr || command.accept(reply);
}

bool send_command(const DownloadCommand& command, uint32_t pause_us) {
  uint32_t length = command.build(dload_tbuf);
  if (length == 0) return false;
  if (DiagPacketTXCRC(dload_tbuf, length, 1) <= 0) return false;
  return receive_reply(command, pause_us);
}
