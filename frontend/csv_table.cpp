#include "csv_table.h"

#include <csv.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "platform_text.h"
#include "user_error.h"

namespace korvenrg::frontend {
namespace {

using Record = std::vector<std::string>;

struct RecordCollector
{
    std::vector<Record> records;
    Record current;
};

void AddCell(void* text, std::size_t length, void* collector)
{
    static_cast<RecordCollector*>(collector)->current.emplace_back(static_cast<const char*>(text), length);
}

void EndRecord(int, void* collector)
{
    auto& target = *static_cast<RecordCollector*>(collector);
    target.records.push_back(std::move(target.current));
    target.current.clear();
}

std::string ReadWholeFile(const std::string& path)
{
    if (std::filesystem::is_directory(path)) throw UserError(fmt::format("{} is a folder, not a file", path));
    std::ifstream file(path, std::ios::binary);
    if (!file) throw UserError(fmt::format("cannot open {}", path));
    std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) throw UserError(fmt::format("cannot read {}", path));
    return content;
}

std::vector<Record> SplitRecords(const std::string& path, const std::string& content)
{
    csv_parser parser;
    if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
    RecordCollector collector;
    const bool parsed = csv_parse(&parser, content.data(), content.size(), AddCell, EndRecord, &collector) ==
                            content.size() &&
                        csv_fini(&parser, AddCell, EndRecord, &collector) == 0;
    csv_free(&parser);
    if (!parsed) {
        const std::size_t row = collector.records.size();
        const std::string place = row == 0 ? "the header" : fmt::format("data row {}", row);
        throw UserError(fmt::format("{}: misplaced or unclosed quote in {}", path, place));
    }
    return std::move(collector.records);
}

void CheckNames(const std::string& path, const Record& names)
{
    std::set<std::string> seen;
    for (const std::string& name : names) {
        if (!name.empty() && !seen.insert(name).second) {
            throw UserError(fmt::format("{}: two columns are named '{}'", path, name));
        }
    }
}

}  // namespace

CsvTable ReadCsvTable(const std::string& path)
{
    std::string content = ReadWholeFile(path);
    constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
    if (content.starts_with(kByteOrderMark)) content.erase(0, 3);
    if (content.find('\0') != std::string::npos || !IsUtf8(content)) {
        throw UserError(fmt::format("{} is not UTF-8 text", path));
    }

    std::vector<Record> records = SplitRecords(path, content);
    if (records.empty()) throw UserError(fmt::format("{} is empty", path));
    CheckNames(path, records.front());
    if (records.size() == 1) throw UserError(fmt::format("{} has a header but no data rows", path));

    CsvTable table;
    table.names = std::move(records.front());
    table.rows = records.size() - 1;
    table.columns.resize(table.names.size());
    for (std::size_t r = 1; r < records.size(); ++r) {
        if (records[r].size() != table.names.size()) {
            throw UserError(fmt::format("{}: data row {} has {} cells, the header has {}",
                                        path,
                                        r,
                                        records[r].size(),
                                        table.names.size()));
        }
        for (std::size_t c = 0; c < table.names.size(); ++c) {
            table.columns[c].push_back(std::move(records[r][c]));
        }
    }
    return table;
}

std::size_t FindColumn(const CsvTable& table, const std::string& name)
{
    const auto found = std::find(table.names.begin(), table.names.end(), name);
    if (name.empty() || found == table.names.end()) {
        throw UserError(fmt::format("there is no column named '{}'", name));
    }
    return static_cast<std::size_t>(found - table.names.begin());
}

bool IsMissingCell(const std::string& cell)
{
    std::string upper = cell;
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return upper.find_first_not_of(" \t") == std::string::npos || upper == "NA" || upper == "NAN" ||
           upper == ".";
}

std::optional<double> NumberOf(const std::string& cell)
{
    const char* first = cell.data();
    const char* last = first + cell.size();
    while (first != last && *first == ' ')
        ++first;
    while (first != last && last[-1] == ' ')
        --last;
    if (last - first > 1 && *first == '+' && first[1] != '-') ++first;
    double value = 0.0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc{} || end != last || first == last || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::vector<std::size_t> CompleteRows(const CsvTable& table, const std::vector<std::size_t>& columns)
{
    std::vector<std::size_t> rows;
    for (std::size_t r = 0; r < table.rows; ++r) {
        const bool complete = std::none_of(columns.begin(), columns.end(), [&](std::size_t column) {
            return IsMissingCell(table.columns[column][r]);
        });
        if (complete) rows.push_back(r);
    }
    return rows;
}

std::vector<double> NumbersOf(const CsvTable& table,
                              std::size_t column,
                              const std::vector<std::size_t>& rows,
                              const std::string& hint)
{
    const std::vector<std::string>& cells = table.columns[column];
    for (std::size_t r = 0; r < cells.size(); ++r) {
        if (!IsMissingCell(cells[r]) && !NumberOf(cells[r])) {
            throw UserError(fmt::format("column '{}' must be numeric: data row {} holds '{}'{}",
                                        table.names[column],
                                        r + 1,
                                        cells[r],
                                        hint));
        }
    }
    std::vector<double> values;
    for (std::size_t r : rows)
        values.push_back(*NumberOf(cells[r]));
    return values;
}

}  // namespace korvenrg::frontend
