// The sample river, rebuilt through the windows with a user's means: copying and pasting blocks of cells, ticking
// boxes, and defining queries in the import dialog.
#include "dataset/vki_file.h"
#include "driver.h"
#include "editors/import_time_series_form.h"
#include "run_program.h"
#include "ui/grid_view.h"
#include "ui/texts.h"
#include "ui/tree_view.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTest>
#include <map>
#include <regex>

namespace vesk {
namespace {

namespace fs = std::filesystem;

void choose(QWidget* dialog, const char* list, const std::string& item) {
  auto* box = find<QComboBox>(dialog, list);
  box->setCurrentIndex(box->findText(shown(item)));
  EXPECT_EQ(box->currentText(), shown(item)) << list;
  emit box->activated(box->currentIndex());
  QApplication::processEvents();
}

void write(QWidget* dialog, const char* field, const QString& text) {
  auto* line = find<QLineEdit>(dialog, field);
  line->setFocus();
  line->selectAll();
  QTest::keyClicks(line, text);
  QTest::keyClick(line, Qt::Key_Tab);
}

class Rebuilding : public testing::Test {
protected:
  Rebuilding() {
    fs::copy(fs::path(SAMPLE).parent_path() / "data", folder.path / "data");
    EXPECT_EQ(run_program(VESK_RUN, {SAMPLE, "--save", folder.file("shipped.vki")}).status, 0);
    program.form().open_file(folder.file("shipped.vki"));
    sample = data();
  }

  const prevesk_dataset_data_type& data() { return *program.form().current_data_set; }

  void visit(const char* command, const std::function<void()>& work) {
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* shown_dialog) {
                  dialog = shown_dialog;
                  activate(); // else no field is notified that it loses the focus
                  work();
                  return press(dialog, copies ? "Cancel" : "OK");
                });
  }

  void activate() {
    dialog->activateWindow();
    EXPECT_TRUE(wait_for([&] { return dialog->isActiveWindow(); }));
  }

  grid_view* enter(const char* name) {
    activate(); // only an active window has shortcuts
    auto* grid = find<grid_view>(dialog, name);
    auto* pages = dialog->findChild<QTabWidget*>();
    for (int page = 0; pages && page < pages->count(); ++page)
      if (pages->widget(page)->isAncestorOf(grid)) pages->setCurrentIndex(page);
    grid->setFocus();
    return grid;
  }

  // All cells of a grid: copied from the sample, then pasted into the new river.
  void exchange(const char* name, const std::string& key = {}) {
    grid_view* grid = enter(name);
    QString& kept = blocks[dialog->windowTitle().toStdString() + name + key];
    grid->selectAll();
    if (copies) {
      QApplication::clipboard()->clear();
      QTest::keyClick(grid, Qt::Key_C, Qt::ControlModifier);
      kept = QApplication::clipboard()->text();
    } else if (kept.isEmpty()) {
      QTest::keyClick(grid, Qt::Key_Minus, Qt::ControlModifier);
    } else {
      QApplication::clipboard()->setText(kept);
      QTest::keyClick(grid, Qt::Key_V, Qt::ControlModifier);
    }
  }

  // The stored query of the current series.
  void define(const import_query_descriptor& wanted) {
    if (copies || wanted.file_name.empty()) return;
    const auto in_import = [&](QWidget* window) {
      if (window->objectName() != "ImportTimeSeriesForm") return false;
      TImportTimeSeriesForm& form = program.form().import_form();
      with_dialog([&] { press(window, "Browse..."); },
                  [&](QWidget* files) { return choose_file(files, shown(folder.file(wanted.file_name))); });
      write(window, "NameEdit", shown(wanted.name));
      if (!form.tables().empty()) choose(window, "TableList", wanted.table_name);
      choose(window, "DateTimeFieldList", wanted.date_time_field);
      choose(window, "ValueFieldList", wanted.value_field);
      for (std::size_t i = 0; i < wanted.conditions.size(); ++i) {
        press(window, "Insert");
        form.ConditionTable.enter(i, condition_grid::field_column, wanted.conditions[i].field_name);
        QApplication::processEvents();
        form.ConditionTable.enter(i, condition_grid::value_column, wanted.conditions[i].value_text);
        QApplication::processEvents();
      }
      QTest::mouseClick(find<QCheckBox>(window, "DeferImportCheckBox"), Qt::LeftButton, {}, {8, 8});
      EXPECT_TRUE(wait_for([&] { return form.stored().deferred; }));
      with_dialog([&] { press(window, "Import"); },
                  [](QWidget* box) { return box->objectName() == "message_box" && press(box, "OK"); });
      return true;
    };
    with_dialog([&] { press(dialog, "Import"); }, in_import);
  }

  void settings() {
    if (copies) return;
    visit("ParameterizationItem", [&] {
      write(dialog, "DatasetNameEdit", shown(sample.description));
      find<QPlainTextEdit>(dialog, "CommentsMemo")->setPlainText(shown(sample.comments));
      write(dialog, "StartDateField", "2011-09-15");
      write(dialog, "StartTimeField", "12:00");
      write(dialog, "EndDateField", "2012-09-30");
      write(dialog, "EndTimeField", "12:00");
      dialog->findChild<QTabWidget*>()->setCurrentIndex(1);
      write(dialog, "MaxTimeStepField", "0.1");
    });
  }

  void series_of_times() {
    for (const char* command : {"TimestepItem", "PrintIntervalItem"})
      visit(command, [&] { exchange("TheFillCalcTable"); });
  }

  void network() {
    visit("SegmentsItem", [&] {
      for (const char* page : {"SegmentFillCalcTable", "ParametersFillCalcTable", "InitialConcentrationsFillCalcTable",
                               "FractionDissolvedFillCalcTable"})
        exchange(page);
    });
    visit("ExchangesItem", [&] {
      functions(sample.exchange_fields[0].functions.size(), [&](std::size_t i) -> const import_query_descriptor& {
        return *sample.exchange_fields[0].functions[i].query;
      });
    });
    visit("FlowsItem", [&] {
      functions(sample.flow_fields[0].functions.size(), [&](std::size_t i) -> const import_query_descriptor& {
        return *sample.flow_fields[0].functions[i].query;
      });
    });
  }

  void functions(std::size_t count, const std::function<const import_query_descriptor&(std::size_t)>& query) {
    exchange("FieldFillCalcTable");
    exchange("FunctionFillCalcTable");
    for (std::size_t i = 0; i < count; ++i) {
      enter("FunctionFillCalcTable")->table().set_active(i, 0);
      exchange("PairsFillCalcTable", std::to_string(i));
      exchange("TimeFunctionFillCalcTable", std::to_string(i));
      define(query(i));
    }
  }

  void substances() {
    visit("SystemsItem", [&] {
      exchange("TheFillCalcTable");
      if (copies) return;
      for (std::size_t s = 0; s < sample.systems.size(); ++s)
        if (sample.systems[s].jmass) click_box("TheFillCalcTable", s, "Mass Balance");
    });
    visit("BoundariesItem", [&] { records("BoundaryTree", &system_data_type::boundaries); });
    visit("LoadsItem", [&] {
      if (!copies) add_loads();
      records("LoadsTree", &system_data_type::loads);
    });
  }

  void click_box(const char* grid, std::size_t row, const QString& header) {
    grid_view* view = enter(grid);
    for (int column = 0; column < view->model().columnCount(); ++column) {
      const QModelIndex cell = view->model().index(static_cast<int>(row), column);
      if (view->model().headerData(column, Qt::Horizontal, Qt::DisplayRole).toString().replace('\n', ' ') != header)
        continue;
      view->scrollTo(cell);
      QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(cell).center());
      return;
    }
    ADD_FAILURE() << header.toStdString();
  }

  static QModelIndex node(tree_view* tree, std::size_t group, std::optional<std::size_t> item = {}) {
    return static_cast<const tree_model*>(tree->model())->index_of({group, item});
  }

  template <class List>
  void records(const char* tree, List system_data_type::*list) {
    auto* view = find<tree_view>(dialog, tree);
    for (std::size_t s = 0; s < sample.systems.size(); ++s)
      for (std::size_t i = 0; i < (sample.systems[s].*list).size(); ++i) {
        view->setCurrentIndex(node(view, s, i));
        exchange("TimeFunctionFillCalcTable", std::to_string(s) + "." + std::to_string(i));
        define(*(sample.systems[s].*list)[i].query);
      }
  }

  void add_loads() {
    auto* tree = find<tree_view>(dialog, "LoadsTree");
    for (std::size_t s = 0; s < sample.systems.size(); ++s) {
      tree->setFocus();
      tree->setCurrentIndex(node(tree, s));
      with_dialog([&] { QTest::keyClick(tree, Qt::Key_Insert); },
                  [&](QWidget* list) {
                    if (list->objectName() != "SelectSegmentsForm") return false;
                    auto* view = find<QListView>(list, "SegmentCheckListBox");
                    for (const loads_data_type& load : sample.systems[s].loads) {
                      view->setCurrentIndex(view->model()->index(load.segment, 0));
                      QTest::keyClick(view, Qt::Key_Space);
                    }
                    return press(list, "OK");
                  });
    }
  }

  void kinetics() {
    visit("ParametersItem", [&] { exchange("TheFillCalcTable"); });
    visit("ConstantsItem", [&] {
      auto* groups = find<QComboBox>(dialog, "ConstantGroupComboBox");
      for (int group = 0; group < groups->count(); ++group) {
        groups->setFocus();
        if (group > 0) QTest::keyClick(groups, Qt::Key_Down);
        exchange("TheFillCalcTable", std::to_string(group));
      }
    });
    visit("TimeFunctionsItem", [&] {
      for (std::size_t i = 0; i < sample.time_functions.size(); ++i) {
        enter("TheFillCalcTable")->table().set_active(i, 0);
        if (!copies && sample.time_functions[i].used) click_box("TheFillCalcTable", i, "Used");
        exchange("TFFillCalcTable", std::to_string(i));
        define(*sample.time_functions[i].query);
      }
    });
    visit("OutputcontrolMenuItem", [&] {
      for (std::size_t i = 0; !copies && i < sample.output_controls.size(); ++i)
        if (sample.output_controls[i].csv_enabled) click_box("TheFillCalcTable", i, "CSV");
    });
  }

  void visit_all() {
    settings();
    series_of_times();
    network();
    substances();
    kinetics();
  }

  temporary_folder folder;
  running_program program;
  prevesk_dataset_data_type sample;
  QWidget* dialog = nullptr; // the open one
  std::map<std::string, QString> blocks;
  bool copies = true; // from the sample; otherwise pastes into the new river
};

// A file's content as text, except for one thing that no window can make equal: the records of a new segment have no
// ISC numbers, since they are identified by position.
std::string dump_of(const std::string& file) {
  static const std::regex record(R"re(\{"isc": \d+, ("value"|"initial_concentration"))re");
  return std::regex_replace(run_program(VKI, {"dump", file}).out, record, "{$1");
}

TEST_F(Rebuilding, TheSampleRiverIsTheSameFileAgain) {
  visit_all();
  copies = false;
  program.form().NewItemClick();
  program.form().save_as(folder.file("rebuilt.vki"));
  visit_all();
  EXPECT_TRUE(program.form().save());
  EXPECT_EQ(data().flow_fields[0].functions[0].query->file_name, "data/release.dbf");
  EXPECT_EQ(difference(dump_of(folder.file("shipped.vki")), dump_of(folder.file("rebuilt.vki"))), "");
}

} // namespace
} // namespace vesk
