#include "new_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string_view>

#include "user_error.h"

namespace korvenrg::frontend {
namespace {

std::size_t ParseRow(std::string_view text, const std::string& whole)
{
    std::size_t row = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), row);
    if (error != std::errc{} || end != text.data() + text.size() || row == 0)
        throw UserError(fmt::format("--validate: '{}' is no list of data rows such as 1-5,9", whole));
    return row;
}

void AddRange(std::string_view range,
              std::size_t tableRows,
              const std::string& whole,
              std::set<std::size_t>& rows)
{
    const std::size_t dash = range.find('-');
    const std::size_t first = ParseRow(range.substr(0, dash), whole);
    const std::size_t last = dash == std::string_view::npos ? first : ParseRow(range.substr(dash + 1), whole);
    if (last < first) throw UserError(fmt::format("--validate: {}-{} runs backwards", first, last));
    if (last > tableRows)
        throw UserError(fmt::format("--validate: there is no data row {}, the last is {}", last, tableRows));
    for (std::size_t row = first; row <= last; ++row)
        rows.insert(row - 1);
}

bool IsKnown(const QualitativeVariable& variable, const std::string& cell)
{
    if (variable.numeric && !NumberOf(cell)) return false;
    const std::string category = CategoryOf(cell, variable.numeric);
    return std::find(variable.categories.begin(), variable.categories.end(), category) !=
           variable.categories.end();
}

/** Takes out the rows that the coding has no columns for. */
void DropUnknown(const CsvTable& table, const ModelData& data, NewRows& found, std::vector<std::size_t>& rows)
{
    const std::size_t before = rows.size();
    for (const QualitativeVariable& variable : data.qualitative) {
        const std::vector<std::string>& cells = table.columns[FindColumn(table, variable.name)];
        std::erase_if(rows, [&](std::size_t r) { return !IsKnown(variable, cells[r]); });
    }
    found.unknownRows = before - rows.size();
}

std::vector<std::size_t> VariableColumns(const CsvTable& table, const ModelData& data)
{
    std::vector<std::size_t> columns;
    for (const QuantitativeVariable& variable : data.quantitative)
        columns.push_back(FindColumn(table, variable.name));
    for (const QualitativeVariable& variable : data.qualitative)
        columns.push_back(FindColumn(table, variable.name));
    return columns;
}

/** The variables of the candidates (rows from 0) that have a cell in all the columns and known categories. */
NewRows ReadVariables(const CsvTable& table,
                      const std::set<std::size_t>& candidates,
                      const std::vector<std::size_t>& columns,
                      const ModelData& data)
{
    NewRows found;
    std::vector<std::size_t> rows = CompleteRows(table, columns);
    std::erase_if(rows, [&candidates](std::size_t r) { return !candidates.contains(r); });
    found.droppedRows = candidates.size() - rows.size();
    DropUnknown(table, data, found, rows);
    if (rows.empty()) {
        throw UserError(
            fmt::format("none of the rows is usable: {} with a missing cell, {} with an unknown category",
                        found.droppedRows,
                        found.unknownRows));
    }
    for (const QuantitativeVariable& variable : data.quantitative)
        found.quantitative.push_back(NumbersOf(table, FindColumn(table, variable.name), rows));
    for (const QualitativeVariable& variable : data.qualitative) {
        const std::vector<std::string>& cells = table.columns[FindColumn(table, variable.name)];
        found.qualitative.emplace_back();
        for (std::size_t r : rows)
            found.qualitative.back().push_back(CategoryOf(cells[r], variable.numeric));
    }
    for (std::size_t r : rows)
        found.rows.push_back(r + 1);
    return found;
}

std::vector<std::size_t> FromZero(std::vector<std::size_t> rows)
{
    for (std::size_t& row : rows)
        --row;
    return rows;
}

}  // namespace

std::set<std::size_t> ParseRows(const std::string& text, std::size_t tableRows)
{
    std::set<std::size_t> rows;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t comma = rest.find(',');
        AddRange(rest.substr(0, comma), tableRows, text, rows);
        if (comma == std::string_view::npos) break;
        rest.remove_prefix(comma + 1);
        if (rest.empty()) ParseRow(rest, text);  // a comma at the end
    }
    return rows;
}

std::string CategoryOf(const std::string& cell, bool numeric)
{
    return numeric ? fmt::format("{}", *NumberOf(cell) + 0.0) : cell;
}

NewRows ReadValidationRows(const CsvTable& table,
                           const std::set<std::size_t>& rows,
                           const ModelData& data,
                           const Options& options)
{
    try {
        std::vector<std::size_t> columns = VariableColumns(table, data);
        columns.push_back(FindColumn(table, options.response));
        if (!options.weights.empty()) columns.push_back(FindColumn(table, options.weights));
        NewRows found = ReadVariables(table, rows, columns, data);
        const std::vector<std::size_t> used = FromZero(found.rows);
        found.response = NumbersOf(table, FindColumn(table, options.response), used);
        found.weights.assign(used.size(), 1.0);
        if (!options.weights.empty()) {
            found.weights = NumbersOf(table, FindColumn(table, options.weights), used);
            if (*std::min_element(found.weights.begin(), found.weights.end()) < 0.0)
                throw UserError(fmt::format("weights '{}' must not be negative", options.weights));
        }
        return found;
    } catch (const UserError& error) {
        throw UserError(fmt::format("--validate: {}", error.what()));
    }
}

NewRows ReadPredictionRows(const std::string& path, const ModelData& data)
{
    try {
        const CsvTable table = ReadCsvTable(path);
        return ReadVariables(table,
                             ParseRows(fmt::format("1-{}", table.rows), table.rows),
                             VariableColumns(table, data),
                             data);
    } catch (const UserError& error) {
        throw UserError(fmt::format("--predict: {}", error.what()));
    }
}

}  // namespace korvenrg::frontend
