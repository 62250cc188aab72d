// The pictures of the program: scalable, with lines in the palette's own colour, so that they suit light and dark.
#pragma once

#include <QIcon>

class QPainter;
class QRect;

namespace vesk {

QIcon tool_image(int index); // of the tool bar's table, from 0; 4 and 19 are the two faces of the run button
QIcon info_image(int index); // of the info list: 0 plain, 1 note, 2 failure; any other is plain
QIcon tree_image(int index); // of a tree's nodes: 0 loads, 2 a system, 3 a segment, 4 boundaries
QIcon with_mark(const QIcon& image, const QIcon& mark); // the mark over its lower right corner
QIcon more_image(); // of the button behind which a bar's commands are that have no room
QIcon program_image();
void draw_splash(QPainter& painter, const QRect& place);

} // namespace vesk
