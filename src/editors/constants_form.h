// TConstantsForm: the model's constants, group by group.
#pragma once

#include "editors/list_form.h"

namespace vesk {

class TConstantsForm final : public list_form<constant_data_type> {
public:
  explicit TConstantsForm(editor_host& host);

  void FormShow() override; // returns to the first group
  editor_choice* choice() override { return &ConstantGroupComboBox; }
  void ChoiceChange(std::size_t position) override;

  editor_choice ConstantGroupComboBox{"ConstantGroupComboBox", "C&onstant Group", {}, 0};

protected:
  void take_content() override;

private:
  void note_value_in_use(const constant_data_type& constant); // says so if it has just come into use as 0
  const shared_list<constant_data_type>* constants() const;   // of the chosen group; null without one
};

} // namespace vesk
