// One operation on a table, from OnBeginChange to OnEndChange, even if it throws. Internal to TFillCalcTable.
#pragma once

#include "charts/fill_calc_table.h"

namespace vesk {

class TFillCalcTable::change {
public:
  change(TFillCalcTable& table, const std::string& label) : table_(table) {
    if (table_.OnBeginChange) table_.OnBeginChange(label);
  }
  ~change() {
    if (!completed_ && table_.OnEndChange) table_.OnEndChange(false);
  }
  change(const change&) = delete;
  change& operator=(const change&) = delete;

  void complete() {
    completed_ = true;
    if (table_.OnEndChange) table_.OnEndChange(true);
  }

private:
  TFillCalcTable& table_;
  bool completed_ = false;
};

} // namespace vesk
