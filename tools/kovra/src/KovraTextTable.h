#pragma once

#include <string>
#include <vector>

/// Rows printed in aligned columns under a header, two blanks apart.
class KovraTextTable {
public:
    explicit KovraTextTable(std::vector<std::string> headers);

    void addRow(std::vector<std::string> cells);
    /// The printed lines, without line ends.
    std::vector<std::string> lines() const;

private:
    std::vector<std::string> headers_;
    std::vector<std::vector<std::string>> rows_;
};
