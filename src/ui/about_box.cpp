#include "ui/about_box.h"

#include "platform/program_paths.h"
#include "ui/images.h"
#include "ui/measures.h"
#include "ui/texts.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace vesk {

about_box::about_box(QWidget* parent, const std::string& edition, const std::string& engine) : QDialog(parent) {
  setObjectName("AboutBox");
  const QString title = "Vesk";
  setWindowTitle("About " + title);

  auto* picture = new QLabel;
  const int side = scaled(96, *this);
  picture->setPixmap(program_image().pixmap(QSize(side, side), devicePixelRatioF()));
  picture->setAlignment(Qt::AlignTop);

  const QString edition_line = edition.empty() ? QString() : "<p>Edition: " + shown(edition).toHtmlEscaped() + "</p>";
  auto* text = new QLabel(
      "<h2>" + title + "</h2><p>Version " + QCoreApplication::applicationVersion() + "</p>" + edition_line +
      "<p>A dynamic compartment model of surface-water quality: the input of a model, its runs "
      "and its results.</p>"
      "<p>Copyright Vesk developers. Free software under the GNU General Public License, version 3 or "
      "later; it comes without any warranty.</p>"
      "<p>Program folder: " +
      shown(program_directory().native()).toHtmlEscaped() + "<br>Engine: " + shown(engine).toHtmlEscaped() +
      "</p><p>Made with Qt " + QString(qVersion()) + ", SQLite, Xerces-C, SUNDIALS, SuiteSparse and NetCDF.</p>");
  text->setObjectName("AboutText");
  text->setWordWrap(true);
  text->setMinimumWidth(scaled(340, *this));
  text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text->setAccessibleName("About " + title);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

  auto* row = new QHBoxLayout;
  row->setSpacing(scaled(16, *this));
  row->addWidget(picture);
  row->addWidget(text, 1);
  auto* column = new QVBoxLayout(this);
  column->addLayout(row);
  column->addWidget(buttons);
}

} // namespace vesk
