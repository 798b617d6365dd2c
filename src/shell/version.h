// The program's name and version as shown in titles and by --version.
#pragma once

namespace lv {

inline constexpr const char kProgramTitle[] = "Lumivue 2.0";
inline constexpr const char kVersionText[] = "2.0";

}  // namespace lv
