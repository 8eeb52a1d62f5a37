#include "programs/export/MarkdownTable.h"

#include <algorithm>
#include <set>
#include <vector>

#include "platform/text/TextTable.h"

namespace quillet {

namespace {

// More columns than any page shows; what lies to the right of them goes into the last one.
constexpr std::size_t kMaximumColumns = 256;

std::u16string line(const std::vector<std::u16string>& cells) {
    std::u16string row = u"|";
    for (const std::u16string& cell : cells) row += u" " + cell + (cell.empty() ? u"|" : u" |");
    return row;
}

} // namespace

void MarkdownTable::add(const platform::TextTableBlock& cell, std::u16string_view paragraph) {
    std::u16string& content = rows_[cell.startingRow][cell.startingColumn];
    if (paragraph.empty()) return;
    if (!content.empty()) content += u"<br>";
    content += paragraph;
}

std::u16string MarkdownTable::markdown() const {
    std::set<std::int64_t> starts;
    for (const auto& [row, cells] : rows_)
        for (const auto& [column, content] : cells) starts.insert(column);
    const std::size_t columns = std::min(starts.size(), kMaximumColumns);
    std::map<std::int64_t, std::size_t> indices;
    for (const std::int64_t start : starts) indices.emplace(start, std::min(indices.size(), columns - 1));

    std::u16string table;
    for (const auto& [row, cells] : rows_) {
        const bool isHead = table.empty();
        std::vector<std::u16string> contents(isHead ? columns : 0);
        for (const auto& [column, content] : cells) {
            const std::size_t index = indices.at(column);
            if (contents.size() <= index) contents.resize(index + 1);
            contents[index] += (contents[index].empty() ? u"" : u" ") + content;
        }
        table += (isHead ? u"" : u"\n") + line(contents);
        if (isHead) table += u"\n" + line(std::vector<std::u16string>(columns, u"---"));
    }
    return table;
}

} // namespace quillet
