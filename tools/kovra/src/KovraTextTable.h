#pragma once

#include <ostream>
#include <string>
#include <vector>

/// Rows printed in aligned columns under a header, two blanks apart.
class KovraTextTable {
public:
    explicit KovraTextTable(std::vector<std::string> headers);

    void addRow(std::vector<std::string> cells);
    size_t rowCount() const { return rows_.size(); }
    void print(std::ostream& out) const;
    /// The printed lines, without line ends.
    std::vector<std::string> lines() const;

private:
    std::vector<std::string> headers_;
    std::vector<std::vector<std::string>> rows_;
};
