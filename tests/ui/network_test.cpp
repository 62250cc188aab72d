// The network window, and the picture in it.
#include "accessible.h"
#include "driver.h"
#include "ui/grid_view.h"
#include "ui/network_window.h"
#include "ui/schematic_view.h"

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <cmath>

namespace vesk {
namespace {

network_window* window_of_the_network() {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (auto* found = dynamic_cast<network_window*>(window); found && found->isVisible()) return found;
  return nullptr;
}

// After the layout has finished.
schematic_view* shown_schematic() {
  EXPECT_TRUE(wait_for([] { return window_of_the_network() != nullptr; }));
  auto* view = find<schematic_view>(window_of_the_network(), "Schematic");
  EXPECT_TRUE(wait_for([&] { return view->network() != nullptr; }, 20000));
  return view;
}

void click(schematic_view* view, std::size_t segment, Qt::KeyboardModifiers keys = {}) {
  const auto place = view->place_of(segment);
  ASSERT_TRUE(place) << segment;
  QTest::mouseClick(view, Qt::LeftButton, keys, place->toPoint());
}

std::size_t active_row(QWidget* dialog, const char* grid) {
  return find<grid_view>(dialog, grid)->table().active_row();
}

TEST(NetworkWindow, ShowsTheDataSetAndFollowsItsChanges) {
  running_program program;
  program.form().open_file(SAMPLE);
  program.trigger("NetworkItem");
  schematic_view* view = shown_schematic();
  EXPECT_EQ(view->network()->picture.boxes.size(), program.form().current_data_set->segments.size());
  expect_accessible(window_of_the_network());
  EXPECT_TRUE(view->accessibleDescription().startsWith("26 segments, 25 flows, "))
      << view->accessibleDescription().toStdString();
  take_picture(window_of_the_network(), "network");
  click(view, 3);
  EXPECT_TRUE(find<QLabel>(window_of_the_network(), "SegmentLabel")->text().startsWith("Segment 4: "));
  EXPECT_TRUE(view->accessibleDescription().contains("Water from: 3 (")) << view->accessibleDescription().toStdString();

  program.form().current_data_set->flow_fields.edit(0).functions.clear();
  EXPECT_TRUE(wait_for([&] { return view->network()->network.flows.empty(); }, 20000));
  program.form().current_data_set->segments.clear();
  EXPECT_TRUE(wait_for([&] { return view->network()->network.segments.empty(); }, 20000));
  EXPECT_EQ(find<QLabel>(window_of_the_network(), "RemarkLabel")->text(), "No segments. Add them in Data > Segments.");
  for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Return, Qt::Key_Plus, Qt::Key_Home}) QTest::keyClick(view, key);
  EXPECT_FALSE(view->selected());
  window_of_the_network()->close();
}

TEST(NetworkWindow, SelectsRowsInTheEditorThatIsOpen) {
  running_program program;
  program.form().open_file(SAMPLE);
  const auto visit = [&](const char* command, const std::function<void(QWidget*, schematic_view*)>& work) {
    with_dialog([&] { program.trigger(command); },
                [&](QWidget* dialog) {
                  EXPECT_TRUE(press(dialog, "Network"));
                  work(dialog, shown_schematic());
                  return press(dialog, "Cancel");
                });
  };
  visit("SegmentsItem", [](QWidget* dialog, schematic_view* view) {
    EXPECT_EQ(view->selected(), 0U); // the editor's row
    click(view, 7);
    EXPECT_EQ(active_row(dialog, "SegmentFillCalcTable"), 7U);
    QTest::keyClick(view, Qt::Key_Right); // moves without choosing
    const auto beside = view->selected();
    EXPECT_TRUE(beside == 6U || beside == 8U); // a row of the picture may run right to left
    EXPECT_EQ(active_row(dialog, "SegmentFillCalcTable"), 7U);
    QTest::keyClick(view, Qt::Key_Return);
    EXPECT_EQ(active_row(dialog, "SegmentFillCalcTable"), beside);
  });
  EXPECT_TRUE(window_of_the_network()); // stays open after the editor has closed
  visit("FlowsItem", [&](QWidget* dialog, schematic_view* view) {
    const auto pair_names = [&](std::int32_t segment) {
      const auto& pairs =
          program.form().current_data_set->flow_fields[0].functions[active_row(dialog, "FunctionFillCalcTable")].pairs;
      const auto& pair = pairs[active_row(dialog, "PairsFillCalcTable")];
      return pair.from_segment == segment || pair.to_segment == segment;
    };
    click(view, 12);
    EXPECT_TRUE(pair_names(12));
    const std::size_t first = active_row(dialog, "PairsFillCalcTable");
    click(view, 12);
    EXPECT_TRUE(pair_names(12));
    EXPECT_NE(active_row(dialog, "PairsFillCalcTable"), first);
  });
  visit("LoadsItem", [&](QWidget* dialog, schematic_view* view) {
    click(view, 25);
    EXPECT_TRUE(find<QLabel>(dialog, "MessageLabel")->text().startsWith("No row here refers to segment 26 "));
  });
  window_of_the_network()->close();
}

// Two chains that join, with values, without Graphviz.
struct Schematic : testing::Test {
  Schematic() {
    prevesk_dataset_data_type data;
    data.resize_segments(5);
    for (std::size_t i = 0; i < 5; ++i) data.segments.edit(i).name = "<b>&Reach " + std::to_string(i + 1);
    flow_function_data_type flow;
    flow.pairs = {{1, no_segment, 0}, {1, 0, 1}, {1, 1, 2}, {1, 3, 2}, {1, 2, 4}, {1, 4, no_segment}};
    data.flow_fields.edit(0).functions.push_back(flow);
    exchange_function_data_type mixing;
    mixing.pairs = {{1, 1, 0, 3}, {1, 1, 4, no_segment}};
    data.exchange_fields.edit(0).functions.push_back(mixing);
    data.systems.resize(1);
    data.systems.edit(0).loads.resize(1);
    auto made = std::make_shared<drawn_network>();
    made->network = make_network(data);
    made->picture = *make_schematic(made->network, std::nullopt, find_graphviz(), [] { return false; });
    view.resize(800, 400);
    view.show_network(made);
    view.show();
  }
  void colour() { view.set_colouring(schematic_view::colouring{{1, 2, std::nan(""), 4, 5}, 1, 5, "Oxygen (mg/L)"}); }
  schematic_view view;
};

TEST_F(Schematic, ColoursByValueAndSaysIt) {
  colour();
  take_picture(&view, "schematic");
  const QImage image = view.grab().toImage();
  const auto ground = [&](std::size_t segment) {
    const QPointF place = *view.place_of(segment);
    return image.pixelColor((place + QPointF(0, -2)).toPoint());
  };
  EXPECT_GT(ground(4).lightness(), ground(0).lightness() + 40);
  EXPECT_NE(ground(0), ground(3));
  view.select(4);
  EXPECT_TRUE(view.accessibleDescription().endsWith("\nOxygen (mg/L): 5"));
  view.select(2);
  EXPECT_FALSE(view.accessibleDescription().contains("Oxygen"));
  view.select(99);
  EXPECT_FALSE(view.selected());
}

TEST_F(Schematic, IsWorkedByMouseAndKeys) {
  QSignalSpy chosen(&view, &schematic_view::segment_chosen);
  click(&view, 1, Qt::ControlModifier);
  ASSERT_EQ(chosen.size(), 1);
  EXPECT_EQ(chosen[0][0].toULongLong(), 1U);
  EXPECT_TRUE(chosen[0][1].toBool());
  QTest::keyClick(&view, Qt::Key_Right);
  EXPECT_EQ(view.selected(), 2U);
  const QPointF before = *view.place_of(2);
  QTest::keyClick(&view, Qt::Key_Plus);
  EXPECT_NE(*view.place_of(2), before);
  QTest::keyClick(&view, Qt::Key_Home);
  EXPECT_EQ(*view.place_of(2), before);
  const QPoint free(400, 10);
  QTest::mousePress(&view, Qt::LeftButton, {}, free);
  QTest::mouseMove(&view, free + QPoint(30, 20));
  QTest::mouseRelease(&view, Qt::LeftButton, {}, free + QPoint(30, 20));
  EXPECT_EQ(*view.place_of(2), before + QPointF(30, 20));
  EXPECT_EQ(chosen.size(), 1); // a drag selects nothing
  view.resize(400, 300);
  QTest::mouseDClick(&view, Qt::LeftButton, {}, {3, 3});
  for (std::size_t i = 0; i < 5; ++i) EXPECT_TRUE(view.rect().contains(view.place_of(i)->toPoint())) << i;
}

TEST_F(Schematic, SavesAllFormats) {
  const temporary_folder folder;
  colour();
  view.set_way({0, 1, 2});
  const auto bytes_of = [&](const char* name) {
    const QString file = QString::fromStdString((folder.path / name).string());
    EXPECT_TRUE(view.save(file)) << name;
    QFile saved(file);
    EXPECT_TRUE(saved.open(QIODevice::ReadOnly));
    return saved.readAll();
  };
  EXPECT_EQ(QImage::fromData(bytes_of("a.png")).size(), QSize(1600, 800));
  EXPECT_TRUE(bytes_of("a.pdf").startsWith("%PDF"));
  const QByteArray svg = bytes_of("a.svg");
  EXPECT_TRUE(svg.contains("<svg") && svg.contains("&lt;b&gt;&amp;Reach"));
  EXPECT_EQ(bytes_of("a.csv"), "segment,name,\"Oxygen (mg/L)\"\n1,\"<b>&Reach 1\",1\n2,\"<b>&Reach 2\",2\n"
                               "3,\"<b>&Reach 3\",\n4,\"<b>&Reach 4\",4\n5,\"<b>&Reach 5\",5\n");
  EXPECT_FALSE(view.save("/nowhere/a.csv"));
  EXPECT_FALSE(view.save("/nowhere/a.png"));
  EXPECT_FALSE(view.save("/nowhere/a.pdf"));
}

} // namespace
} // namespace vesk
