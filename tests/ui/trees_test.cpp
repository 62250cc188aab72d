// The windows with a tree: loads and boundaries, and the lists they open.
#include "accessible.h"
#include "app/forms.h"
#include "driver.h"
#include "ui/check_list.h"
#include "ui/grid_view.h"
#include "ui/tree_view.h"

#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QtTest/QAbstractItemModelTester>

namespace vesk {
namespace {

using node = editor_tree::node;

constexpr std::size_t oxygen = 3; // of the sample's systems; the one without loads

QMenu* open_menu() {
  EXPECT_TRUE(wait_for([] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }));
  return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

QStringList commands_of(const QMenu* menu) {
  QStringList names;
  for (const QAction* action : menu->actions())
    names << action->objectName() + (action->isEnabled() ? "" : " (disabled)");
  return names;
}

class Trees : public testing::Test {
protected:
  Trees() { program.form().open_file(SAMPLE); }

  const prevesk_dataset_data_type& data() { return *program.form().current_data_set; }

  void visit(const char* command, const std::function<void(QWidget*)>& work, const char* button = "OK") {
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* dialog) {
                  dialog->activateWindow(); // only an active window has shortcuts
                  EXPECT_TRUE(wait_for([&] { return dialog->isActiveWindow(); }));
                  work(dialog);
                  return press(dialog, button);
                });
  }

  static QModelIndex index_of(tree_view* tree, const node& which) {
    return static_cast<const tree_model*>(tree->model())->index_of(which);
  }

  running_program program;
};

TEST_F(Trees, AreWorkedByKeyboard) {
  const std::size_t loads = data().systems[0].loads.size();
  ASSERT_GT(loads, 1U);
  ASSERT_EQ(data().systems[oxygen].loads.size(), 0U);
  const std::size_t segments = data().segments.size();
  visit("LoadsItem", [&](QWidget* dialog) {
    auto* tree = find<tree_view>(dialog, "LoadsTree");
    auto* combo = find<QComboBox>(dialog, "InterpolationTypeComboBox");
    const QAbstractItemModelTester tester(tree->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    const auto key = [&](int pressed, Qt::KeyboardModifiers with = {}) {
      QTest::keyClick(tree, static_cast<Qt::Key>(pressed), with);
    };
    EXPECT_TRUE(tree->hasFocus());
    EXPECT_TRUE(tree->isExpanded(index_of(tree, {0, {}})));
    EXPECT_FALSE(combo->isVisible());
    auto* insert = find<QPushButton>(dialog, "InsertRowButton");
    EXPECT_FALSE(insert->isEnabled()); // no series to act on
    EXPECT_FALSE(insert->toolTip().isEmpty());
    take_picture(dialog, "loads_nothing_selected");
    key(Qt::Key_Home);
    key(Qt::Key_Down, {});
    EXPECT_FALSE(combo->isVisible());
    key(Qt::Key_Down, {}); // the first load
    EXPECT_TRUE(combo->isVisible());
    EXPECT_TRUE(insert->isEnabled());
    EXPECT_TRUE(find<QLabel>(dialog, "TimeFunctionsLabel")->text().startsWith("Time functions for segment "));
    take_picture(dialog, "loads_selected");
    QTest::keyClick(combo, Qt::Key_Down);
    EXPECT_EQ(data().systems[0].loads[0].interpolation_type, interpolation_step);

    key(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(commands_of(open_menu()), (QStringList{"DeleteLoadItem", "CopySeriesItem"}));
    QTest::keyClick(open_menu(), Qt::Key_Escape);
    tree->setCurrentIndex(index_of(tree, {oxygen, {}}));
    QContextMenuEvent menu_key(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(tree, &menu_key);
    EXPECT_EQ(commands_of(open_menu()),
              (QStringList{"AddRemoveLoadsItem", "AddAllLoadsItem", "DeleteAllLoadsItem (disabled)"}));
    QTest::keyClick(open_menu(), Qt::Key_L); // Add All Loads
    EXPECT_EQ(data().systems[oxygen].loads.size(), segments);
    tree->setFocus();

    tree->collapse(index_of(tree, {0, {}}));
    tree->setCurrentIndex(index_of(tree, {oxygen, 2}));
    auto* grid = find<grid_view>(dialog, "TimeFunctionFillCalcTable");
    grid->table().enter(0, 2, "5");
    grid->setFocus();
    QTest::keyClick(grid, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(data().systems[oxygen].loads[2].points[0].value, 0);
    EXPECT_EQ(tree->currentIndex(), index_of(tree, {oxygen, 2})); // kept, like the closed nodes
    EXPECT_FALSE(tree->isExpanded(index_of(tree, {0, {}})));
    EXPECT_TRUE(tree->isExpanded(index_of(tree, {oxygen, {}})));

    grid->table().enter(0, 2, "no number");
    tree->setFocus();
    key(Qt::Key_Up); // returns to the entry
    EXPECT_TRUE(grid->hasFocus());
    EXPECT_TRUE(wait_for([&] { return tree->currentIndex() == index_of(tree, {oxygen, 2}); }));
    QTest::keyClick(grid, Qt::Key_Escape);

    tree->setFocus();
    with_dialog([&] { key(Qt::Key_Delete); },
                [&](QWidget* box) { return box->windowTitle() == "Delete Load?" && press(box, "Yes"); });
    EXPECT_EQ(data().systems[oxygen].loads.size(), segments - 1);
    EXPECT_FALSE(combo->isVisible());
    EXPECT_FALSE(tree->currentIndex().isValid());
  });
  EXPECT_EQ(data().systems[oxygen].loads.size(), segments - 1);
  visit("LoadsItem", [&](QWidget* dialog) { // all nodes are open again
    auto* tree = find<tree_view>(dialog, "LoadsTree");
    EXPECT_TRUE(tree->isExpanded(index_of(tree, {0, {}})));
  });
}

TEST_F(Trees, AMarkLeavesTheRecordItsImage) {
  program.form().current_data_set->systems.edit(0).loads.edit(0).segment = 30'000;
  visit("LoadsItem", [&](QWidget* dialog) {
    auto* tree = find<tree_view>(dialog, "LoadsTree");
    const auto image = [&](std::size_t item) {
      const QVariant icon = tree->model()->data(index_of(tree, {0, item}), Qt::DecorationRole);
      return icon.value<QIcon>().pixmap(32).toImage();
    };
    const QImage marked = image(0), plain = image(1);
    EXPECT_NE(marked, plain);
    const QRect seen(0, 0, plain.width() / 3, plain.height());
    EXPECT_EQ(marked.copy(seen), plain.copy(seen));
  });
}

TEST_F(Trees, OpenTheirPopupsByTheMouse) {
  visit("BoundariesItem", [&](QWidget* dialog) {
    auto* tree = find<tree_view>(dialog, "BoundaryTree");
    const auto right_click = [&](const QModelIndex& at) {
      tree->scrollTo(at);
      const QPoint place = tree->visualRect(at).center();
      QTest::mouseClick(tree->viewport(), Qt::RightButton, {}, place);
      QContextMenuEvent event(QContextMenuEvent::Mouse, place, tree->viewport()->mapToGlobal(place));
      QApplication::sendEvent(tree->viewport(), &event);
    };
    right_click(index_of(tree, {0, {}}));
    EXPECT_FALSE(QApplication::activePopupWidget()); // systems have no commands here
    right_click(index_of(tree, {0, 0}));
    EXPECT_EQ(commands_of(open_menu()), QStringList{"CopySeriesItem"});
    take_picture(dialog, "boundaries");
    with_dialog([&] { QTest::keyClick(open_menu(), Qt::Key_C); },
                [&](QWidget* copies) {
                  if (copies->objectName() != "CopySeriesForm") return false;
                  expect_accessible(copies);
                  take_picture(copies, "window_CopySeriesForm");
                  return press(copies, "Cancel");
                });
    find<QTabWidget>(dialog, "Pages")->setCurrentIndex(1);
    take_picture(dialog, "boundaries_factors");
  });
}

TEST_F(Trees, SegmentsAreFoundAndCheckedInAList) {
  std::size_t before = 0;
  visit("LoadsItem", [&](QWidget* dialog) {
    auto* tree = find<tree_view>(dialog, "LoadsTree");
    tree->setCurrentIndex(index_of(tree, {oxygen, {}}));
    with_dialog([&] { QTest::keyClick(tree, Qt::Key_Insert); },
                [&](QWidget* list) {
                  if (list->objectName() != "SelectSegmentsForm" || !list->isActiveWindow()) return false;
                  EXPECT_EQ(list->windowTitle(), "Loads for " + tree->currentIndex().data().toString());
                  auto* view = find<QListView>(list, "SegmentCheckListBox");
                  QTest::keyClicks(list->focusWidget(), "swash"); // the search line
                  const QModelIndex first = view->currentIndex();
                  EXPECT_TRUE(first.data().toString().contains("swash", Qt::CaseInsensitive));
                  QTest::keyClick(list->focusWidget(), Qt::Key_Return);
                  EXPECT_TRUE(view->currentIndex().data().toString().contains("swash", Qt::CaseInsensitive));
                  QTest::keyClick(list->focusWidget(), Qt::Key_Down);
                  EXPECT_EQ(list->focusWidget(), view);
                  QTest::keyClick(view, Qt::Key_Home);
                  QTest::keyClick(view, Qt::Key_Down, Qt::ShiftModifier);
                  QTest::keyClick(view, Qt::Key_Down, Qt::ShiftModifier);
                  QTest::keyClick(view, Qt::Key_Space); // all three
                  EXPECT_EQ(find<QLabel>(list, "MessageLabel")->text(), "OK adds 3 loads.");
                  expect_accessible(list);
                  take_picture(list, "window_SelectSegmentsForm");
                  return press(list, "OK");
                });
    before = data().systems[oxygen].loads.size();
  });
  EXPECT_EQ(before, 3U);
  EXPECT_EQ(data().systems[oxygen].loads[2].segment, 2);
}

TEST_F(Trees, OfAHundredThousandLoadsAreSearched) {
  prevesk_dataset_data_type& large = *program.form().current_data_set;
  constexpr std::size_t segments = 100'000;
  large.resize_segments(segments);
  for (std::size_t i = 0; i < segments; ++i) large.segments.edit(i).name = "Reach " + std::to_string(i + 1);
  large.systems.edit(oxygen).loads.clear();
  visit("LoadsItem", [&](QWidget* dialog) {
    auto* tree = find<tree_view>(dialog, "LoadsTree");
    program.form().forms().loads.add_all_loads(oxygen);
    tree->setFocus();
    QTest::keyClick(tree, Qt::Key_F, Qt::ControlModifier);
    auto* line = find<QLineEdit>(dialog, "FindEdit");
    EXPECT_TRUE(line->hasFocus());
    QTest::keyClicks(line, "reach 99999");
    QTest::keyClick(line, Qt::Key_Return);
    EXPECT_EQ(tree->currentIndex(), index_of(tree, {oxygen, 99'998}));
    EXPECT_TRUE(line->hasFocus());
    EXPECT_TRUE(tree->viewport()->rect().contains(tree->visualRect(tree->currentIndex()).center()));
    take_picture(dialog, "find_in_tree");
    QTest::keyClick(line, Qt::Key_Escape);
    EXPECT_TRUE(tree->hasFocus());
    EXPECT_FALSE(line->isVisible());
    QTest::keyClick(tree, Qt::Key_F3); // wraps around to the same name
    EXPECT_EQ(tree->currentIndex(), index_of(tree, {oxygen, 99'998}));
  });
}

} // namespace
} // namespace vesk
