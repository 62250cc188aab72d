// Shows the hourglass until the end of a block.
#pragma once

#include "app/user_interface.h"

namespace vesk {

class busy_cursor {
public:
  explicit busy_cursor(user_interface& ui) : ui_(ui) { ui_.set_busy(true); }
  ~busy_cursor() { ui_.set_busy(false); }
  busy_cursor(const busy_cursor&) = delete;
  busy_cursor& operator=(const busy_cursor&) = delete;

private:
  user_interface& ui_;
};

} // namespace vesk
