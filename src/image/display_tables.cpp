#include "image/display_tables.h"

namespace lv {

namespace {

DisplayTables MakeIdentity()
{
    DisplayTables tables;
    DisplayTablesIdentity(tables);
    return tables;
}

DisplayTables gTables = MakeIdentity();

}  // namespace

DisplayTables& CurrentDisplayTables() { return gTables; }

void DisplayTablesIdentity(DisplayTables& tables)
{
    for (int i = 0; i < 256; ++i)
        tables.red[i] = tables.green[i] = tables.blue[i] = static_cast<uint8_t>(i);
}

}  // namespace lv
