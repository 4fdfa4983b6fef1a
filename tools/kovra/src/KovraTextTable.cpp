#include "KovraTextTable.h"

#include "KovraText.h"

#include <algorithm>

KovraTextTable::KovraTextTable(std::vector<std::string> headers) : headers_(std::move(headers)) {}

void KovraTextTable::addRow(std::vector<std::string> cells) {
    cells.resize(headers_.size());
    rows_.push_back(std::move(cells));
}

std::vector<std::string> KovraTextTable::lines() const {
    std::vector<size_t> widths(headers_.size());
    for (size_t column = 0; column < headers_.size(); ++column) {
        widths[column] = KovraText::width(headers_[column]);
        for (const auto& row : rows_) widths[column] = std::max(widths[column], KovraText::width(row[column]));
    }
    auto render = [&widths](const std::vector<std::string>& cells) {
        std::string line;
        for (size_t column = 0; column < cells.size(); ++column) {
            bool last = column + 1 == cells.size();
            line += last ? cells[column] : KovraText::padded(cells[column], widths[column]) + "  ";
        }
        return line;
    };
    std::vector<std::string> lines{render(headers_)};
    for (const auto& row : rows_) lines.push_back(render(row));
    return lines;
}
