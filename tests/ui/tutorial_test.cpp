// Follows the tutorial "A river from nothing" of the user guide step by step, with keyboard and mouse.
#include "dataset/vki_file.h"
#include "driver.h"
#include "query/sources/open_table_source.h"
#include "run_program.h"
#include "typist.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QRegularExpression>
#include <QTreeView>
#include <cstdio>

namespace vesk {
namespace {

namespace fs = std::filesystem;

using text_pair = std::pair<const char*, const char*>;

// The text of the tutorial, and the position reached in it.
class tutorial_text {
public:
  tutorial_text() {
    QFile file(GUIDE);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QString page = QString::fromUtf8(file.readAll());
    const qsizetype begin = page.indexOf("<h3 id=\"river-from-nothing\">");
    EXPECT_GE(begin, 0);
    text_ = page.mid(begin, page.indexOf("<h3 ", begin + 1) - begin);
  }

  // The next mention of a text to type, choose or press. The test fails if there is none.
  QString next(const QString& what) {
    qsizetype found = -1;
    for (const auto& [before, after] :
         {text_pair{"<code>", "</code>"}, text_pair{"<b>", "</b>"}, text_pair{"“", "”"}}) {
      const qsizetype at = text_.indexOf(QString::fromUtf8(before) + what + QString::fromUtf8(after), at_);
      if (at >= 0 && (found < 0 || at < found)) found = at;
    }
    EXPECT_GE(found, 0) << "the tutorial does not name " << what.toStdString()
                        << " from here on: " << text_.mid(at_, 200).toStdString();
    if (found < 0) return what;
    typed_ += text_.mid(found, 6) == "<code>" ? 1 : 0;
    at_ = found + 1;
    return what;
  }

  // Checks that everything the tutorial asks to type has been typed.
  void expect_complete() const {
    QString prose = text_;
    prose.remove(QRegularExpression("<pre.*?</pre>", QRegularExpression::DotMatchesEverythingOption));
    EXPECT_EQ(prose.count("<code>"), typed_ + 1) << "the first one shows how they are set";
  }

  // A block that is copied unchanged.
  QString block(const QString& name) const {
    const QString begin = "<pre id=\"" + name + "\"><code>";
    const qsizetype at = text_.indexOf(begin) + begin.size();
    return text_.mid(at, text_.indexOf("</code>", at) - at);
  }

private:
  QString text_;
  qsizetype at_ = 0;
  qsizetype typed_ = 0;
};

// The rows of a sheet, in the form in which spreadsheets copy them.
std::string sheet_as_text(const std::string& workbook, const char* sheet) {
  const auto source = open_table_source(workbook);
  const std::size_t table = source->find_table(sheet), fields = source->fields(table).size();
  std::string text;
  for (const auto cursor = source->rows(table); cursor->next();)
    for (std::size_t i = 0; i < fields; ++i) {
      const table_value value = cursor->value(i);
      char number[32];
      if (value.kind() == value_kind::text)
        text += value.text();
      else
        text.append(number, static_cast<std::size_t>(std::snprintf(number, sizeof number, "%g", value.number())));
      text += i + 1 < fields ? '\t' : '\n';
    }
  return text;
}

// A results file without its time of writing.
std::string results_of(const std::string& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  std::string bytes = content.str();
  const std::size_t written = bytes.find("Z written by the bundled engine");
  EXPECT_NE(written, bytes.npos);
  constexpr std::size_t length = std::string_view("2024-06-01T00:00:00").size();
  return written < length ? bytes : bytes.replace(written - length, length, length, '-');
}

class Tutorial : public testing::Test {
protected:
  Tutorial() { fs::copy(EXAMPLES "/millbrook", folder.path); }

  typist& main_window() { return user.in("PreveskMainForm"); }
  typist& open(const char* letter, const char* item, const char* window) {
    guide.next(item);
    return main_window().keys("Alt+D").keys(letter).in(window);
  }
  typist& press(const char* button) {
    guide.next(button);
    return user.press(button);
  }
  typist& type(const char* value) { return user.text(guide.next(value)).keys("Return"); }
  typist& open_file(const char* window, const char* name) {
    user.in("file_dialog").text(QString::fromStdString(folder.file("")) + guide.next(name)).keys("Return");
    return user.in(window);
  }
  void put_on_clipboard(const char* block) {
    main_window().check([this, block] { QApplication::clipboard()->setText(guide.block(block)); });
  }

  void make_data_set() {
    main_window().keys("Ctrl+N").until([this] { return program.form().current_data_set != nullptr; });
    open("D", "Data &gt; Data set", "ParametersForm").go_to("DatasetNameEdit").text(guide.next("Millbrook"));
    user.go_to("ModelTypeComboBox").text(guide.next("Dissolved oxygen").left(3));
    for (const auto& [control, value] : {text_pair{"StartDateField", "06/01/2024"},
                                         text_pair{"StartTimeField", "00:00"}, text_pair{"EndDateField", "06/11/2024"}})
      user.click(control).keys("Ctrl+A").text(guide.next(value));
    user.click("EndTimeField").keys("Ctrl+A").text(guide.next("00:00")).keys("Tab").picture("tutorial_settings");
    press("OK");
    guide.next("File &gt; Save");
    main_window().keys("Ctrl+S");
    open_file("PreveskMainForm", "millbrook.vki").until([this] { return !program.form().file_name.empty(); });
  }

  void make_times() {
    const char* const grid = "TheFillCalcTable";
    open("M", "Data &gt; Time steps", "TimeStepForm");
    press("Insert").click_cell(grid, 0, 2);
    type("0.1").keys("Down").until([this] { return data().time_steps.points.size() == 2; }).click_cell(grid, 1, 0);
    type("06/11/2024").click_cell(grid, 1, 2);
    type("0.1").picture("tutorial_steps");
    press("OK");
    open("I", "Data &gt; Print intervals", "PrintIntervalForm").click_cell(grid, 0, 2);
    type("6 h");
    type("6 h").picture("tutorial_intervals");
    press("OK");
  }

  void make_network() {
    put_on_clipboard("millbrook-segments");
    open("S", "Data &gt; Segments", "SegmentForm").click("SegmentFillCalcTable").keys("Ctrl+V");
    user.until([this] { return data().segments.size() == 3; }).picture("tutorial_segments");
    press("OK");
    put_on_clipboard("millbrook-pairs");
    open("F", "Data &gt; Flows", "ExchangesFlowsForm").click_cell("FieldFillCalcTable", 0, 1);
    user.click("FunctionFillCalcTable");
    press("Insert").click_cell("FunctionFillCalcTable", 0, 0);
    type("River").click("PairsFillCalcTable").keys("Ctrl+V").click_cell(series, 0, 2);
    type("2");
    type("2").picture("tutorial_flows");
    press("OK");
    const QString line = guide.next("2 boundaries added: segments 1 (Mill bridge) and 3 (Lower weir), 4 systems");
    main_window().check([this, line] {
      const auto* lines = find<QTreeView>(&program.window(), "InfoListView")->model();
      EXPECT_EQ(lines->index(lines->rowCount() - 1, 0).data().toString(), line);
    });
  }

  void import_boundaries() {
    const char* const import = "ImportTimeSeriesForm";
    open("B", "Data &gt; Boundaries", "BoundaryForm").click_node("BoundaryTree", 3, 0);
    press("Import").in(import);
    press("Browse...");
    open_file(import, "millbrook.xlsx").go_to("TableList").text(guide.next("oxygen").left(2));
    press("Run query").picture("tutorial_workbook");
    press("Import").in("message_box");
    press("OK").in("BoundaryForm").until([this] { return data().systems[3].boundaries[0].points.size() == 11; });

    user.picture("tutorial_imported").click_node("BoundaryTree", 2, 0);
    press("Import").in(import);
    press("Browse...");
    open_file(import, "millbrook.sqlite").go_to("DateTimeFieldList").text(guide.next("sampled").left(3));
    user.go_to("ValueFieldList").text(guide.next("concentration").left(3));
    press("Insert").click_cell("ConditionTable", 0, 1).keys("F2").text(guide.next("substance")).keys("Return");
    user.click_cell("ConditionTable", 0, 3).keys("F2").text(guide.next("CBOD")).keys("Return");
    user.click("DeferImportCheckBox").picture("tutorial_database");
    press("Import").in("message_box");
    press("OK").in("BoundaryForm").picture("tutorial_boundaries");
    press("OK");
  }

  void add_load() {
    open("L", "Data &gt; Loads", "LoadsForm").click_node("LoadsTree", 2).keys("Ins").in("SelectSegmentsForm");
    user.click("SegmentCheckListBox").keys("Home").keys("Down").keys("Space");
    press("OK").in("LoadsForm").click_node("LoadsTree", 2, 0).click_cell(series, 0, 2);
    type("4800");
    type("4800").picture("tutorial_load");
    press("OK");
    open("O", "Data &gt; Output control", "OutputControlForm").click_cell("TheFillCalcTable", 3, 3);
    press("OK");
  }

  void run_model() {
    main_window().keys("Ctrl+S").keys("F5").until([this] { return !program.form().active_thread; });
    user.picture("tutorial_run");
  }

  const prevesk_dataset_data_type& data() { return *program.form().current_data_set; }

  const char* const series = "TimeFunctionFillCalcTable";
  temporary_folder folder;
  running_program program;
  typist user;
  tutorial_text guide;
};

TEST_F(Tutorial, ARiverFromNothingRunsTheSameInTheWindowAndTheConsole) {
  make_data_set();
  make_times();
  make_network();
  import_boundaries();
  add_load();
  run_model();
  user.work();
  guide.expect_complete();
  EXPECT_EQ(program.form().last_job().failure, "");
  const std::string in_window = results_of(folder.file("millbrook.nc"));
  EXPECT_TRUE(folder.read("millbrook_oxygen.csv").ends_with("\n" + guide.block("millbrook-end").toStdString()))
      << folder.read("millbrook_oxygen.csv");

  // The saved file contains everything, with tables named relative to it.
  prevesk_dataset_data_type saved;
  read_data_file(folder.file("millbrook.vki"), saved);
  EXPECT_EQ(saved.systems[2].boundaries[0].query->file_name, "millbrook.sqlite");
  EXPECT_EQ(saved.systems[3].boundaries[0].query->file_name, "millbrook.xlsx");
  for (const segment_data_type& segment : saved.segments) EXPECT_EQ(segment.bottom_segment, no_segment);
  EXPECT_EQ(difference(run_program(VKI, {"dump", folder.file("finished.vki")}).out,
                       run_program(VKI, {"dump", folder.file("millbrook.vki")}).out),
            "");
  fs::remove(folder.path / "millbrook.nc");
  EXPECT_EQ(run_program(VESK_RUN, {folder.file("millbrook.vki"), "-RUN"}).status, 0);
  EXPECT_TRUE(in_window == results_of(folder.file("millbrook.nc")));
}

TEST_F(Tutorial, TheSheetsHaveTheRowsOfTheText) {
  for (const char* sheet : {"segments", "pairs"})
    EXPECT_EQ(sheet_as_text(folder.file("millbrook.xlsx"), sheet),
              guide.block(QString("millbrook-") + sheet).toStdString());
}

} // namespace
} // namespace vesk
