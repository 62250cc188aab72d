#include "ui/appearance.h"

#include "ui/images.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QPainter>
#include <QProxyStyle>
#include <QSlider>
#include <QStyleFactory>
#include <QStyleOption>

namespace vesk {

namespace {

// The colours of a palette, one row a role.
struct role_colour {
  QPalette::ColorRole role;
  QRgb light, dark;
};

constexpr role_colour colours[] = {
    {QPalette::Window, 0xfff0f2f4, 0xff2b2e31},
    {QPalette::WindowText, 0xff1d2125, 0xffe6e8ea},
    {QPalette::Base, 0xffffffff, 0xff1e2022},
    {QPalette::AlternateBase, 0xfff5f7f9, 0xff26292c},
    {QPalette::Text, 0xff1d2125, 0xffe6e8ea},
    {QPalette::Button, 0xffe7eaed, 0xff363a3e},
    {QPalette::ButtonText, 0xff1d2125, 0xffe6e8ea},
    {QPalette::BrightText, 0xffffffff, 0xffffffff},
    {QPalette::ToolTipBase, 0xffffffe6, 0xff3c4146},
    {QPalette::ToolTipText, 0xff1d2125, 0xffe6e8ea},
    {QPalette::PlaceholderText, 0xff6d7680, 0xff9aa3ab},
    {QPalette::Highlight, 0xff1f6fb2, 0xff2f7fc4},
    {QPalette::HighlightedText, 0xffffffff, 0xffffffff},
    {QPalette::Link, 0xff1f6fb2, 0xff7db8ea},
    {QPalette::LinkVisited, 0xff6b4f9e, 0xffb9a3e0},
    {QPalette::Light, 0xffffffff, 0xff4a4f54},
    {QPalette::Midlight, 0xfff6f8f9, 0xff404448},
    {QPalette::Mid, 0xffb9c0c6, 0xff24272a},
    {QPalette::Dark, 0xff9aa3ab, 0xff1a1c1e},
    {QPalette::Shadow, 0xff6d7680, 0xff0e0f10},
};

constexpr QRgb disabled_text_light = 0xff8b949c, disabled_text_dark = 0xff7b838a;

constexpr char portal_service[] = "org.freedesktop.portal.Desktop";
constexpr char portal_path[] = "/org/freedesktop/portal/desktop";
constexpr char portal_settings[] = "org.freedesktop.portal.Settings";
constexpr char portal_group[] = "org.freedesktop.appearance";
constexpr char portal_key[] = "color-scheme";

void apply(appearance look) {
  QApplication::setPalette(palette_of(look));
}

// The desktop's setting: 1 requests a dark look. The reply may be wrapped in several variants.
void apply_scheme(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  if (value.canConvert<uint>()) apply(value.toUInt() == 1 ? appearance::dark : appearance::light);
}

// Receives the desktop's signals that a setting has changed.
class scheme_listener final : public QObject {
  Q_OBJECT
public:
  using QObject::QObject;
public slots:
  void changed(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == portal_group && key == portal_key) apply_scheme(value.variant());
  }
};

// Fusion without icons on dialog buttons.
class plain_fusion final : public QProxyStyle {
public:
  plain_fusion() : QProxyStyle(QStyleFactory::create("Fusion")) {}

  // Qt's own icon is black on any background.
  QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override {
    if (which == SP_ToolBarHorizontalExtensionButton) return more_image();
    return QProxyStyle::standardIcon(which, option, widget);
  }

  // Fusion draws slider ticks darker than the window, which makes them invisible in dark mode.
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_Slider || !slider || slider->tickPosition != QSlider::TicksBelow || slider->tickInterval <= 0)
      return;
    const int room = pixelMetric(PM_SliderSpaceAvailable, option, widget);
    const int half = pixelMetric(PM_SliderLength, option, widget) / 2;
    const int top = subControlRect(CC_Slider, option, SC_SliderHandle, widget).bottom() + 2;
    constexpr int tick_height = 3, opacity = 160;
    QColor ink = option->palette.color(QPalette::WindowText);
    ink.setAlpha(opacity);
    painter->save();
    painter->setPen(ink);
    for (int value = slider->minimum; value <= slider->maximum; value += slider->tickInterval) {
      const int x = half + sliderPositionFromValue(slider->minimum, slider->maximum, value, room, slider->upsideDown);
      painter->drawLine(x, top, x, top + tick_height);
    }
    painter->restore();
  }

  // Fusion draws the frame of an empty box darker than the window, too.
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool is_box = element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
    constexpr int opacity = 160, half = 128;
    QColor ink = option->palette.color(QPalette::WindowText);
    if (!is_box || ink.lightness() < half) return; // a light window shows the frame
    ink.setAlpha(opacity);
    painter->save();
    painter->setPen(ink);
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
  }

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    return hint == SH_DialogButtonBox_ButtonsHaveIcons ? 0 : QProxyStyle::styleHint(hint, option, widget, result);
  }
};

// Asynchronous: a desktop without the service must not delay the start.
void ask_the_desktop(QApplication& application) {
  if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return; // connecting would start a bus
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  QDBusMessage question = QDBusMessage::createMethodCall(portal_service, portal_path, portal_settings, "Read");
  question << QString(portal_group) << QString(portal_key);
  auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), &application);
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, &application, [](QDBusPendingCallWatcher* watcher) {
    const QDBusPendingReply<QVariant> reply = *watcher;
    if (!reply.isError()) apply_scheme(reply.value());
    watcher->deleteLater();
  });
  auto* listener = new scheme_listener(&application);
  bus.connect(portal_service, portal_path, portal_settings, "SettingChanged", listener,
              SLOT(changed(QString, QString, QDBusVariant)));
}

} // namespace

QPalette palette_of(appearance look) {
  const bool dark = look == appearance::dark;
  QPalette palette;
  for (const role_colour& row : colours)
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
      palette.setColor(group, row.role, QColor::fromRgb(dark ? row.dark : row.light));
  const QColor disabled = QColor::fromRgb(dark ? disabled_text_dark : disabled_text_light);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
    palette.setColor(QPalette::Disabled, role, disabled);
  palette.setColor(QPalette::Disabled, QPalette::Highlight, palette.color(QPalette::Disabled, QPalette::Mid));
  return palette;
}

bool is_dark(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() < 128;
}

void follow_the_desktop(QApplication& application) {
  const bool desktop_is_dark = is_dark(QApplication::palette());
  QApplication::setStyle(new plain_fusion);
  const QByteArray wanted = qgetenv("VESK_APPEARANCE");
  if (wanted == "dark" || wanted == "light") return apply(wanted == "dark" ? appearance::dark : appearance::light);
  apply(desktop_is_dark ? appearance::dark : appearance::light);
  ask_the_desktop(application);
}

} // namespace vesk

#include "appearance.moc"
