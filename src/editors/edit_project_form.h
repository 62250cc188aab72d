// TEditProjectForm: the files that belong to a data file.
//
// It edits the data set's list in place without a snapshot, so changes survive Cancel.
#pragma once

#include "editors/editor.h"

namespace vesk {

class TEditProjectForm final : public editor {
public:
  explicit TEditProjectForm(editor_host& host);

  std::string_view class_name() const override { return "TEditProjectForm"; }
  std::string caption() const override { return "Related project files"; }
  std::vector<editor_command> extra_commands() override;

  void BrowseButtonClick(); // a file for the active row

protected:
  void take_content() override;
  std::string find_refusal() override;
  std::string_view refusal_title() const override { return "Error"; }

private:
  // The list of names as a grid of one column.
  class name_grid final : public grid {
  public:
    explicit name_grid(editor_host& host) : host_(host) {}

    const shared_list<project_component>* files() const;
    std::span<const grid_column> columns() const override { return columns_; }
    std::size_t row_count() const override { return files() ? files()->size() : 0; }
    cell_value value(std::size_t row, std::size_t column) const override;
    void set_value(std::size_t row, std::size_t column, const cell_value& value) override;
    bool has_free_rows() const override { return files() != nullptr; }
    void insert_row(std::size_t row) override { host_.data_set()->project_files.insert(row, {}); }
    void erase_rows(std::size_t first, std::size_t count) override;
    void resize(std::size_t count) override { host_.data_set()->project_files.resize(count); }

  private:
    editor_host& host_;
    static constexpr std::size_t longest_name = 255;
    std::vector<grid_column> columns_{{"Project Component", {.kind = cell_kind::text, .longest_text = longest_name}}};
  };

  name_grid names_;
  editor_panel& panel_;
};

} // namespace vesk
