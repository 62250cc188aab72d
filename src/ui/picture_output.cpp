#include "ui/picture_output.h"

#include "ui/chart_view.h"
#include "ui/questions.h"
#include "ui/texts.h"

#include <QPrinter>
#include <QPrinterInfo>

namespace vesk {

void save_picture(const picture_output& picture) {
  const auto name = ask_for_file({file_dialog::kind::save, "Save the chart",
                                  "PNG pictures|*.png|SVG pictures|*.svg|PDF files|*.pdf|CSV tables|*.csv", "png"},
                                 {});
  if (!name) return;
  if (!chart_view::can_save_as(shown(*name)))
    ask_in_box("Error", "The name " + *name + " must end in .png, .svg, .pdf or .csv.", box_buttons::ok);
  else if (!picture.save(shown(*name)))
    ask_in_box("Error", "Cannot write the chart to " + *name + ".", box_buttons::ok);
}

void print_picture(const picture_output& picture) {
  if (QPrinterInfo::defaultPrinter().isNull()) {
    const auto name =
        ask_for_file({file_dialog::kind::save, "Print to a PDF file", "PDF files|*.pdf", "pdf", ".pdf"}, {});
    if (name && !picture.save(shown(*name)))
      ask_in_box("Error", "Cannot write the chart to " + *name + ".", box_buttons::ok);
    return;
  }
  QPrinter printer;
  printer.setPageOrientation(QPageLayout::Landscape);
  if (!picture.paint(printer, printer.pageLayout().paintRectPixels(printer.resolution())))
    ask_in_box("Error", "The default printer \"" + stored(printer.printerName()) + "\" cannot print the chart.",
               box_buttons::ok);
}

} // namespace vesk
