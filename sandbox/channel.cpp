#include "sandbox/channel.h"

#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

namespace sandbox {

bool is_socket(int file) {
  int type = 0;
  socklen_t size = sizeof type;
  return getsockopt(file, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

bool send(int channel, const void* bytes, std::size_t size) {
  for (const char* at = static_cast<const char*>(bytes); size > 0;) {
    const ssize_t sent = write(channel, at, size);
    if (sent <= 0) return false;
    at += sent, size -= static_cast<std::size_t>(sent);
  }
  return true;
}

bool receive(int channel, void* bytes, std::size_t size) {
  for (char* at = static_cast<char*>(bytes); size > 0;) {
    const ssize_t got = read(channel, at, size);
    if (got <= 0) return false;
    at += got, size -= static_cast<std::size_t>(got);
  }
  return true;
}

} // namespace sandbox
