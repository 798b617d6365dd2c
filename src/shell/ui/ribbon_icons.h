// The pictures of the tool bar's buttons, drawn for the program: a folder to
// open, a disk to save, magnifiers for the zooms, and a picture for each
// tool. The button's text stays its name and its tip.
#pragma once

#include <QIcon>
#include <cstdint>

namespace lv {

// The picture of a command's button; a plain one for a command without its
// own picture.
QIcon RibbonIcon(int32_t command);

}  // namespace lv
