// TSetSeedDateForm: the date from which an old text file counts its days. No command opens it yet.
#pragma once

#include "editors/editor_host.h"
#include "editors/entry_field.h"
#include "editors/form.h"

namespace vesk {

class TSetSeedDateForm final : public form {
public:
  static constexpr std::string_view group_caption = "Seed Date";
  static constexpr std::string_view explanation =
      "Old style VESK input files use real numbers to denote moments in time, counting a number of days since some "
      "arbitrary 'seed date'. This seed date is not important to the model itself, so it was not stored in the old "
      "style VESK input file. It is neccesary to specify at this time the seed date you wish to use for this file.";

  explicit TSetSeedDateForm(editor_host& host) : host_(host) {}

  std::string_view class_name() const override { return "TSetSeedDateForm"; }
  std::string caption() const override { return "Set Seed Date"; }
  void FormShow() override;
  bool FormCloseQuery(bool by_ok) override;
  std::string message() const; // why OK is refused; empty: accepted

  entry_field StartDateField{"StartDateField", "Start Date", {cell_kind::date}};
  entry_field StartTimeField{"StartTimeField", "Start Time", {cell_kind::time}};

private:
  editor_host& host_;
};

} // namespace vesk
