#pragma once

#include <initializer_list>

#include "export/export_options.h"

namespace kestrel::test {

// The export dialog with every box cleared except the named ones.
inline ExportColumns Only(std::initializer_list<bool ExportColumns::*> on)
{
    ExportColumns c{false, false, false, false, false, false, false, false, false,
                    false, false, false, false, false, false, false, false};
    for (auto box : on)
        c.*box = true;
    return c;
}

} // namespace kestrel::test
