/*
 * A table for people: columns as wide as they have to be, two blanks between them.
 */
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace desk {

class TextTable {
  public:
    enum class Align : uint8_t { Left, Right };

    explicit TextTable(std::vector<Align> columns) : mColumns(std::move(columns)) {}

    // As many cells as there are columns.
    void add(std::vector<std::string> cells) { mRows.push_back(std::move(cells)); }
    bool isEmpty() const { return mRows.empty(); }

    // The lines, each with its end and with two blanks ahead.
    std::string text() const;

  private:
    std::vector<Align> mColumns;
    std::vector<std::vector<std::string>> mRows;
};

}  // namespace desk
