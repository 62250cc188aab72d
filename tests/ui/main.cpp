#include "driver.h"

#include <QApplication>
#include <QTimer>

// With arguments DATA FILE and SETTINGS behind "--close-in-the-middle" this is the program itself, whose window is
// closed once a job is under way.
static void close_in_the_middle(QApplication& application, const std::string& data_file, const std::string& settings) {
  using namespace vesk;
  program whole(application, {{data_file, "-RUN"}, settings, 0});
  whole.window().form().engine_path = ENGINE;
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    if (whole.window().form().ResultsTableGetCellData(0, 0)) whole.window().close();
  });
  watch.start(5);
  whole.run();
}

int main(int argc, char** argv) {
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QApplication application(argc, argv);
  vesk::prepare_application(application);
  if (argc == 4 && std::string(argv[1]) == "--close-in-the-middle") close_in_the_middle(application, argv[2], argv[3]);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
