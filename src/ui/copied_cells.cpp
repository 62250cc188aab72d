#include "ui/copied_cells.h"

#include "charts/cells_html.h"
#include "ui/texts.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <algorithm>

namespace vesk {

void copy_cells(const std::string& cells) {
  constexpr auto most_in_html = 100'000;
  const QString text = shown(cells);
  auto* copied = new QMimeData; // the clipboard takes it
  copied->setText(text);
  const auto count = std::ranges::count_if(cells, [](char c) { return c == '\t' || c == '\n'; });
  if (count <= most_in_html) copied->setHtml(QString::fromStdString(html_of_cells(stored(text))));
  QApplication::clipboard()->setMimeData(copied);
}

} // namespace vesk
