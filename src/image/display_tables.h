// The three display tables through which every colour bound for the screen
// passes: identity until a monitor calibration is loaded.
#pragma once

#include <cstdint>

namespace lv {

struct DisplayTables {
    uint8_t red[256];
    uint8_t green[256];
    uint8_t blue[256];
};

// The tables in force for the whole program.
DisplayTables& CurrentDisplayTables();

// Makes all three tables the identity.
void DisplayTablesIdentity(DisplayTables& tables);

}  // namespace lv
