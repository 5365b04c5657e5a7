#include "tune/TextTable.h"

#include <fmt/format.h>

#include <algorithm>

#include "text/PrintableText.h"

namespace desk {

std::string TextTable::text() const {
    std::vector<size_t> widths(mColumns.size());
    for (const auto& row : mRows) {
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], printableText(row[i]).size());
        }
    }
    std::string text;
    for (const auto& row : mRows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) {
            const std::string cell = printableText(row[i]);
            line += mColumns[i] == Align::Left ? fmt::format("  {:<{}}", cell, widths[i])
                                               : fmt::format("  {:>{}}", cell, widths[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

}  // namespace desk
