// TAboutBox: the product, its version and its edition.
#pragma once

#include <QDialog>
#include <string>

namespace vesk {

class about_box final : public QDialog {
public:
  about_box(QWidget* parent, const std::string& edition);
};

} // namespace vesk
