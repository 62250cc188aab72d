// TLoadsForm: the mass that enters the water body from outside, by system and segment.
#pragma once

#include "editors/select_segments_form.h"
#include "editors/tree_series_form.h"

namespace vesk {

class TLoadsForm final : public tree_series_form {
public:
  explicit TLoadsForm(editor_host& host);

  std::vector<menu_item> menu(const node& which) override;

  // The popups' commands.
  void add_all_loads(std::size_t system);
  void delete_all_loads(std::size_t system); // asks first, as does delete_load
  void delete_load(std::size_t system, std::size_t load);
  void add_remove_loads(std::size_t system); // through TSelectSegmentsForm

private:
  // Changes the system's loads in one step, and refreshes the tree.
  void change_loads(std::size_t system, const std::string& label,
                    const std::function<void(shared_list<loads_data_type>&)>& change);
  loads_data_type new_load(std::size_t segment) const;
  bool ask(const std::string& text); // false also when the data set was replaced meanwhile
  bool may_delete(std::size_t system, std::int32_t segment, const char* question);

  TSelectSegmentsForm select_segments_;
};

} // namespace vesk
