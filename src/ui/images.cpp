#include "ui/images.h"

#include "ui/texts.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

// The images are in a static library: without this call the linker drops them.
static void take_in_images() {
  Q_INIT_RESOURCE(images);
}

namespace vesk {

namespace {

// By position in the tool bar's images.
constexpr const char* tool_images[] = {"new",
                                       "open",
                                       "save",
                                       "import_network",
                                       "run",
                                       "data_set",
                                       "systems",
                                       "segments",
                                       "parameters",
                                       "constants",
                                       "exchanges",
                                       "flows",
                                       "loads",
                                       "boundaries",
                                       "time_functions",
                                       "print_intervals",
                                       "output_control",
                                       "post_processor",
                                       "havle",
                                       "cancel"};

constexpr const char* tree_images[] = {"loads", "loads", "systems", "segments", "boundaries"};

constexpr const char* info_images[] = {"info_plain", "info_note", "info_failure"};

// Images painted at any size.
class painted_picture : public QIconEngine {
public:
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap pixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return pixmap;
  }
};

// "currentColor" in the image means the text colour.
class themed_picture final : public painted_picture {
public:
  explicit themed_picture(QByteArray svg) : svg_(std::move(svg)) {}

  QIconEngine* clone() const override { return new themed_picture(svg_); }

  void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State) override {
    const bool disabled = mode == QIcon::Disabled;
    const QPalette palette = QApplication::palette();
    const QColor ink = palette.color(disabled ? QPalette::Disabled : QPalette::Active,
                                     mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::ButtonText);
    QSvgRenderer renderer(QByteArray(svg_).replace("currentColor", ink.name().toLatin1()));
    painter->save();
    if (disabled) painter->setOpacity(0.45);
    renderer.render(painter, place);
    painter->restore();
  }

private:
  QByteArray svg_;
};

// An image with a smaller one over its lower right corner.
class marked_picture final : public painted_picture {
public:
  marked_picture(QIcon image, QIcon mark) : image_(std::move(image)), mark_(std::move(mark)) {}

  QIconEngine* clone() const override { return new marked_picture(image_, mark_); }

  void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State state) override {
    image_.paint(painter, place, Qt::AlignCenter, mode, state);
    const QSize part = place.size() * 5 / 8;
    const QPoint corner = place.bottomRight() - QPoint(part.width() - 1, part.height() - 1);
    mark_.paint(painter, QRect(corner, part), Qt::AlignCenter, mode, state);
  }

private:
  QIcon image_, mark_;
};

QByteArray svg_of(const char* name) {
  static const bool taken_in = (take_in_images(), true);
  (void)taken_in;
  QFile file(QString(":/images/%1.svg").arg(name));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QIcon picture(const char* name) {
  return QIcon(new themed_picture(svg_of(name)));
}

} // namespace

QIcon tool_image(int index) {
  return picture(tool_images[index]);
}

QIcon info_image(int index) {
  return picture(info_images[index >= 0 && index < static_cast<int>(std::size(info_images)) ? index : 0]);
}

QIcon tree_image(int index) {
  return picture(tree_images[index]);
}

QIcon with_mark(const QIcon& image, const QIcon& mark) {
  return QIcon(new marked_picture(image, mark));
}

QIcon more_image() {
  return picture("chevrons");
}

QIcon program_image() {
  return picture("vesk");
}

void draw_splash(QPainter& painter, const QRect& place) {
  QSvgRenderer(svg_of("splash")).render(&painter, place);
}

} // namespace vesk
