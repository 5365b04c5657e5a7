/*
 * A table as text: columns as wide as their content, with two blanks between them.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace desk {

class TextTable {
  public:
    enum class Align : uint8_t { Left, Right };

    explicit TextTable(std::vector<Align> columns) : mColumns(std::move(columns)) {}

    // Adds a row. The number of cells is that of the columns.
    void add(std::vector<std::string> cells) { mRows.push_back(std::move(cells)); }
    bool isEmpty() const { return mRows.empty(); }

    // The lines, indented by two blanks, each with its newline.
    std::string text() const;

  private:
    std::vector<Align> mColumns;
    std::vector<std::vector<std::string>> mRows;
};

}  // namespace desk
