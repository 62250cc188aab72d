// The network's editors in little space: at 700 by 500 pixels, and with text at twice the size.
#include "accessible.h"
#include "app/forms.h"
#include "driver.h"
#include "ui/grid_view.h"
#include "ui/tree_view.h"

#include <QApplication>
#include <QTabWidget>
#include <QTest>

namespace vesk {
namespace {

struct small_window {
  const char* command;
  const char* inner = nullptr; // the window to test, instead of the editor
  std::function<void(QWidget*)> open = {};
};

class Sizes : public testing::TestWithParam<int> { // text size in per cent
protected:
  Sizes() : usual(QApplication::font()) {
    QFont font = usual;
    font.setPointSizeF(usual.pointSizeF() * GetParam() / 100);
    QApplication::setFont(font);
  }
  ~Sizes() override { QApplication::setFont(usual); }

  static void look_at(QWidget* window) {
    const QSize room = GetParam() == 100 ? QSize(700, 500) : QSize(1280, 900);
    if (GetParam() == 100) window->resize(room);
    QTest::qWait(30);
    EXPECT_LE(window->width(), room.width()) << window->objectName().toStdString();
    EXPECT_LE(window->height(), room.height()) << window->objectName().toStdString();
    auto* pages = window->findChild<QTabWidget*>();
    for (int page = 0; page < (pages ? pages->count() : 1); ++page) {
      if (pages) pages->setCurrentIndex(page);
      take_picture(window, QString("size_%1_%2_%3").arg(GetParam()).arg(window->objectName()).arg(page + 1));
      expect_in_reach_as_shown(window);
    }
  }
  const QFont usual;
};

TEST_P(Sizes, CutNothingOff) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto select_first = [](QWidget* dialog) {
    auto* tree = dialog->findChild<tree_view*>();
    if (tree) tree->setCurrentIndex(static_cast<const tree_model*>(tree->model())->index_of({0, 0}));
  };
  const auto loads = [&program]() -> TLoadsForm& { return program.form().forms().loads; };
  const small_window windows[] = {
      {"SegmentsItem"},
      {"ExchangesItem"},
      {"FlowsItem"},
      {"LoadsItem"},
      {"BoundariesItem"},
      {"FlowsItem", "ImportTimeSeriesForm", [](QWidget* dialog) { press(dialog, "Import"); }},
      {"SegmentsItem", "FillCalculateForm", [](QWidget* dialog) { press(dialog, "Fill/Calc"); }},
      {"LoadsItem", "SelectSegmentsForm", [&](QWidget*) { loads().add_remove_loads(0); }},
      {"LoadsItem", "CopySeriesForm",
       [&](QWidget*) {
         loads().copy_record({series_kind::load, 0, 0});
       }},
      {"LoadsItem", "RegularTimesForm", [&](QWidget*) { loads().regular_times_click(*loads().panels()[0]); }},
  };
  for (const small_window& wanted : windows)
    with_dialog([&] { program.trigger(wanted.command); },
                [&](QWidget* dialog) {
                  select_first(dialog);
                  if (!wanted.open) {
                    look_at(dialog);
                  } else {
                    with_dialog([&] { wanted.open(dialog); },
                                [&](QWidget* inner) {
                                  if (inner->objectName() != wanted.inner) return false;
                                  look_at(inner);
                                  return press(inner, "Cancel");
                                });
                  }
                  return press(dialog, "Cancel");
                });
}

INSTANTIATE_TEST_SUITE_P(PerCent, Sizes, testing::Values(100, 200), testing::PrintToStringParamName());

} // namespace
} // namespace vesk
