#include "driver.h"

#include <QApplication>
#include <QTimer>
#include <csignal>
#include <cstdlib>

// With the arguments "--close-in-the-middle" DATA FILE SETTINGS this is the program itself, whose window is closed
// during a job.
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

// With "--end-by-signal" NUMBER SETTINGS it is the program, which receives the signal while a box is open.
static void end_by_signal(QApplication& application, int signal, const std::string& settings) {
  using namespace vesk;
  program whole(application, {{}, settings, 0});
  QTimer::singleShot(500, [&] {
    QTimer::singleShot(100, [signal] { std::raise(signal); });
    whole.window().message_box("Sure?", "A question", box_buttons::yes_no);
  });
  whole.run();
}

int main(int argc, char** argv) {
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QApplication application(argc, argv);
  vesk::prepare_application(application);
  if (argc == 4 && std::string(argv[1]) == "--close-in-the-middle") close_in_the_middle(application, argv[2], argv[3]);
  if (argc == 4 && std::string(argv[1]) == "--end-by-signal") end_by_signal(application, std::atoi(argv[2]), argv[3]);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
