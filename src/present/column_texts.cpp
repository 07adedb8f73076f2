#include "present/column_texts.h"

#include "base/string_table.h"

namespace kestrel {

std::string ErrorLetters(bool pe, bool fe, bool le, int langOffset)
{
    std::string letters;
    const bool set[3] = {pe, fe, le};
    for (int k = 0; k < 3; ++k)
        if (set[k])
            letters += StrIn(ColumnText::ParityLetter + k, langOffset);
    return letters;
}

} // namespace kestrel
