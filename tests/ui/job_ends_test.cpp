// A job ends, in every possible way, while a dialog of the network, or a window opened from it, is open.
#include "app/forms.h"
#include "dataset/network.h"
#include "dataset/same_content.h"
#include "dataset/series.h"
#include "driver.h"
#include "sqlite_file.h"
#include "ui/grid_view.h"
#include "ui/tree_view.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QTest>
#include <filesystem>
#include <fstream>

namespace vesk {
namespace {

using work_in = std::function<void(QWidget*)>;

// One of a stack of open windows, starting with the editor.
struct open_window {
  const char* name;     // object name; empty: a question of Qt's file dialog
  work_in work;         // opens the next window, or prepares the last one; may be empty
  const char* leave;    // the button to press: the one that continues, if there is one
  bool is_over = false; // it has closed before the next one opens
};

// The job ends while the last window is open.
struct place {
  const char* name;
  const char* command;
  std::vector<open_window> windows;
};

work_in button(const char* text) {
  return [text](QWidget* window) { EXPECT_TRUE(press(window, text)) << text; };
}

work_in menu_item(const char* grid, const char* text) {
  return [=](QWidget* dialog) {
    for (QAction* item : find<grid_view>(dialog, grid)->actions())
      if (item->text().remove('&') == text) return item->trigger();
    ADD_FAILURE() << text;
  };
}

work_in at_node(const editor_tree::node& selected, const work_in& then = {}) {
  return [=](QWidget* dialog) {
    auto* tree = dialog->findChild<tree_view*>();
    tree->setCurrentIndex(static_cast<const tree_model*>(tree->model())->index_of(selected));
    if (then) then(dialog);
  };
}

work_in key_in_tree(Qt::Key pressed) {
  return [pressed](QWidget* dialog) { QTest::keyClick(dialog->findChild<tree_view*>(), pressed); };
}

work_in switch_segment(int row) {
  return [row](QWidget* dialog) {
    auto* list = find<QListView>(dialog, "SegmentCheckListBox");
    list->setCurrentIndex(list->model()->index(row, 0));
    QTest::keyClick(list, Qt::Key_Space);
  };
}

work_in calculate(const char* text) {
  return [text](QWidget* dialog) { find<QLineEdit>(dialog, "FillCalculateEdit")->setText(text); };
}

void paste_nonsense(QWidget* dialog) {
  QApplication::clipboard()->setText("a\tnone");
  press(dialog, "Paste");
}

work_in name_file(const std::string& name, const char* pressed = nullptr) {
  return [=](QWidget* dialog) {
    find<QLineEdit>(dialog, "fileNameEdit")->setText(QString::fromStdString(name));
    if (pressed) press(dialog, pressed);
  };
}

// In the import dialog, as if the name was typed.
work_in read_table(const std::string& file, const char* pressed, bool deferred = false) {
  return [=](QWidget* dialog) {
    auto* edit = find<QLineEdit>(dialog, "FileNameEdit");
    edit->setText(QString::fromStdString(file));
    edit->setModified(true);
    if (deferred) QTest::mouseClick(find<QCheckBox>(dialog, "DeferImportCheckBox"), Qt::LeftButton, {}, {8, 8});
    press(dialog, pressed);
  };
}

// Enters two points with the same date and time.
void accept_duplicates(QWidget* dialog) {
  TFillCalcTable& table = find<grid_view>(dialog, "TimeFunctionFillCalcTable")->table();
  EXPECT_TRUE(table.enter(1, 0, table.text(0, 0)) && table.enter(1, 1, table.text(0, 1)));
  press(dialog, "OK");
}

// Enters a number that the sample does not contain in the first possible cell.
void edit_a_value(QWidget* dialog) {
  for (grid_view* grid : dialog->findChildren<grid_view*>()) {
    const auto columns = grid->table().content().columns();
    for (std::size_t column = 0; column < columns.size(); ++column)
      if (columns[column].type.kind == cell_kind::number && grid->table().is_editable(0, column)) {
        EXPECT_TRUE(grid->table().enter(0, column, "0.8125"));
        return;
      }
  }
  ADD_FAILURE() << "nothing to edit";
}

// The outcome of the job, and the file name that makes the engine produce it.
struct job_end {
  const char* name;
  const char* file;
  bool cancelled = false;
};

class JobEnds : public testing::TestWithParam<job_end> {
protected:
  JobEnds() : job_file(folder.file(GetParam().file)) {
    folder.write("gauges.csv", "DATE_TIME,RESULT\n2012-10-02,1\n2012-10-03,2\n");
    folder.write("old.csv", "");
    write_endless_sqlite(folder.file("endless.sqlite"));
    program.form().engine_path = MISBEHAVING_ENGINE;
  }

  const prevesk_dataset_data_type& data() { return *program.form().current_data_set; }
  std::vector<place> places();
  void visit(const place& where);
  void walk(const place& where, std::size_t level, const std::function<void()>& open);
  void end_job();
  void query_a_missing_file(QWidget*) {
    edit_series(*program.form().current_data_set, {series_kind::boundary, 0, 0}).query.edit().file_name = "none.csv";
  }

  temporary_folder folder;
  const std::string job_file;
  running_program program;
  prevesk_dataset_data_type before_end, result; // of the job
};

std::vector<place> JobEnds::places() {
  constexpr std::size_t oxygen = 3; // the system without loads
  const int loaded = data().systems[0].loads[0].segment;
  const std::string gauges = folder.file("gauges.csv");
  const open_window segments{"SegmentForm", {}, "Cancel"}, loads{"LoadsForm", at_node({0, 0}), "Cancel"},
      boundaries{"BoundaryForm", at_node({0, 0}), "Cancel"}, flows{"ExchangesFlowsForm", {}, "Cancel"},
      question{"message_box", {}, "Yes"}, report{"message_box", {}, "OK"};
  const auto doing = [](open_window window, const work_in& work) {
    window.work = work;
    return window;
  };
  const work_in export_csv = menu_item("SegmentFillCalcTable", "Export as CSV...");
  const auto import = [&](const char* name, const work_in& work, const std::vector<open_window>& next = {}) {
    place made{name, "FlowsItem", {doing(flows, button("Import")), {"ImportTimeSeriesForm", work, "OK"}}};
    made.windows.insert(made.windows.end(), next.begin(), next.end());
    return made;
  };
  return {
      {"segments", "SegmentsItem", {segments}},
      {"fill", "SegmentsItem", {doing(segments, button("Fill/Calc")), {"FillCalculateForm", calculate("7"), "OK"}}},
      {"refused paste", "SegmentsItem", {doing(segments, paste_nonsense), report}},
      {"export",
       "SegmentsItem",
       {doing(segments, export_csv), {"file_dialog", name_file(folder.file("new.csv")), "Save"}}},
      {"overwrite",
       "SegmentsItem",
       {doing(segments, export_csv),
        {"file_dialog", name_file(folder.file("old.csv"), "Save"), "Cancel"},
        {"", {}, "Yes"}}},
      {"exchanges", "ExchangesItem", {flows}},
      {"flows", "FlowsItem", {flows}},
      {"refused OK", "FlowsItem", {doing(flows, accept_duplicates), report}},
      import("import", {}),
      import("question of immediate import", read_table(gauges, "Import"), {report}),
      import("question of deferred import", read_table(gauges, "Import", true), {report}),
      import("failed import", read_table("none.csv", "Import"), {report}),
      import("choice of a table", button("Browse..."), {{"file_dialog", name_file(gauges), "Open"}}),
      import("reading", read_table(folder.file("endless.sqlite"), "Run query"), {{"progress_box", {}, "Cancel"}}),
      {"loads", "LoadsItem", {loads}},
      {"delete a load", "LoadsItem", {doing(loads, at_node({0, 0}, key_in_tree(Qt::Key_Delete))), question}},
      {"delete all loads",
       "LoadsItem",
       {doing(loads, [this](QWidget*) { program.form().forms().loads.delete_all_loads(0); }), question}},
      {"choice of segments",
       "LoadsItem",
       {doing(loads, at_node({oxygen, {}}, key_in_tree(Qt::Key_Insert))),
        {"SelectSegmentsForm", switch_segment(0), "OK"}}},
      {"question of the segments",
       "LoadsItem",
       {doing(loads, at_node({0, {}}, key_in_tree(Qt::Key_Insert))),
        {"SelectSegmentsForm", switch_segment(loaded), "OK", true},
        question}},
      {"copy of a load",
       "LoadsItem",
       {doing(loads,
              [this](QWidget*) {
                program.form().forms().loads.copy_record({series_kind::load, 0, 0});
              }),
        {"CopySeriesForm", switch_segment(2), "OK"}}},
      {"boundaries", "BoundariesItem", {boundaries}},
      {"regular times",
       "BoundariesItem",
       {doing(boundaries, at_node({0, 0}, menu_item("TimeFunctionFillCalcTable", "Regular times..."))),
        {"RegularTimesForm", {}, "OK"}}},
      {"failed refresh",
       "BoundariesItem",
       {doing(boundaries,
              [this](QWidget* dialog) {
                query_a_missing_file(dialog);
                at_node({0, 0}, menu_item("TimeFunctionFillCalcTable", "Refresh this series"))(dialog);
              }),
        report}},
  };
}

void JobEnds::end_job() {
  before_end = data();
  if (GetParam().cancelled)
    program.form().cancel_job();
  else
    std::filesystem::remove(job_file); // the engine waits for its removal
  EXPECT_TRUE(wait_for([this] { return !program.form().active_thread; }));
  QTest::qWait(5);
  result = data();
}

void JobEnds::walk(const place& where, std::size_t level, const std::function<void()>& open) {
  with_dialog(open, [&](QWidget* front) {
    const open_window& window = where.windows[level];
    const bool is_it = *window.name ? front->objectName() == window.name
                                    : front->objectName() != "file_dialog" && qobject_cast<QMessageBox*>(front);
    if (!is_it) return false;
    if (level + 1 == where.windows.size() || window.is_over) {
      if (window.work) window.work(front);
    } else {
      walk(where, level + 1, [&] { window.work(front); });
    }
    if (window.is_over) {
      EXPECT_TRUE(press(front, window.leave));
      ++level;
      return false;
    }
    if (level + 1 == where.windows.size()) {
      end_job();
      EXPECT_TRUE(front->isVisible());
    }
    return !front->isVisible() || press(front, window.leave);
  });
}

void JobEnds::visit(const place& where) {
  SCOPED_TRACE(where.name);
  program.form().open_file(SAMPLE);
  const prevesk_dataset_data_type before = data();
  std::ofstream(job_file).put('x');
  program.form().start_import_network(job_file);
  place edited = where;
  edited.windows[0].work = [work = where.windows[0].work](QWidget* dialog) {
    edit_a_value(dialog);
    if (work) work(dialog);
  };
  walk(edited, 0, [&] { program.trigger(where.command); });
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_EQ(program.form().active_thread, nullptr);
  EXPECT_FALSE(same_content(before, before_end));
  EXPECT_TRUE(same_content(data(), GetParam().cancelled ? before : result));
  EXPECT_EQ(verify(data()), "");
  int steps = 0; // Undo restores the data set replaced by the job
  while (!same_content(data(), before_end) && ++steps < 8) program.form().UndoItemClick();
  EXPECT_LT(steps, 8);
}

TEST_P(JobEnds, LoseNothingAndEveryWindowCloses) {
  program.form().open_file(SAMPLE);
  for (const place& where : places()) visit(where);
}

INSTANTIATE_TEST_SUITE_P(Windows, JobEnds,
                         testing::Values(job_end{"Good", "held.vkn"},
                                         job_end{"GoodWithOneSegment", "held one-segment.vkn"},
                                         job_end{"FailedWithOneSegment", "held one-segment fails.vkn"},
                                         job_end{"Cancelled", "held.vkn", true}),
                         [](const auto& end) { return end.param.name; });

} // namespace
} // namespace vesk
