// The program's images: scalable, with lines in the palette's text colour, so that they suit light and dark.
#pragma once

#include <QIcon>

class QPainter;
class QRect;

namespace vesk {

QIcon tool_image(int index); // of the tool bar's table, from 0; 4 and 19 are the two faces of the run button
QIcon info_image(int index); // of the info list: 0 plain, 1 note, 2 failure; any other is plain
QIcon tree_image(int index); // of a tree's nodes: 0 loads, 2 a system, 3 a segment, 4 boundaries
QIcon with_mark(const QIcon& image, const QIcon& mark); // the mark over its lower right corner
QIcon more_image();                                     // for the button that opens the commands a bar has no room for
QIcon program_image();
void draw_splash(QPainter& painter, const QRect& place);

} // namespace vesk
