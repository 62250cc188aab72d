// Letters that choose a control together with Alt.
#pragma once

#include <QString>

class QWidget;

namespace vesk {

// Gives each button and each label of a control within `page` that has no letter yet one of its own, the first of a
// word where that is free. `taken`: letters that are used around the page. "OK" and "Cancel" have their keys.
void give_mnemonics(QWidget& page, QString taken = {});

} // namespace vesk
