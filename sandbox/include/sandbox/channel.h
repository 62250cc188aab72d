// The socket over which a helper process answers.
#ifndef SANDBOX_CHANNEL_H
#define SANDBOX_CHANNEL_H

#include <cstddef>

namespace sandbox {

bool is_socket(int file);

// All of `size` bytes; false when the other side is gone.
bool send(int channel, const void* bytes, std::size_t size);
bool receive(int channel, void* bytes, std::size_t size);

} // namespace sandbox

#endif
