#include "csv_output.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <system_error>

#include "user_error.h"

namespace korvenrg::frontend {
namespace {

namespace fs = std::filesystem;

/** Files under temporary names; those that have not got their own name at the end are removed, and so is the
 * folder if this run made it and it is still empty. */
class PendingFiles
{
  public:
    explicit PendingFiles(const fs::path& folder) : folder_(folder)
    {
        std::error_code error;
        folderIsNew_ = fs::create_directories(folder_, error);
        if (error || !fs::is_directory(folder_)) Fail();
    }
    ~PendingFiles()
    {
        std::error_code ignored;
        for (const fs::path& name : names_)
            fs::remove(TemporaryName(name), ignored);
        if (folderIsNew_) fs::remove(folder_, ignored);  // refuses a folder that holds anything
    }
    PendingFiles(const PendingFiles&) = delete;
    PendingFiles& operator=(const PendingFiles&) = delete;

    void Write(const std::string& name, const std::string& content)
    {
        names_.push_back(folder_ / name);
        if (fs::is_directory(names_.back())) Fail();
        std::ofstream file(TemporaryName(names_.back()), std::ios::binary | std::ios::trunc);
        file << content;
        file.close();
        if (!file) Fail();
    }

    void Commit()
    {
        for (const fs::path& name : names_) {
            std::error_code error;
            fs::rename(TemporaryName(name), name, error);
            if (error) Fail();
        }
    }

  private:
    static fs::path TemporaryName(fs::path name)
    {
        return name += ".unfinished";
    }

    [[noreturn]] void Fail() const
    {
        throw UserError(fmt::format("cannot write into the folder {}", folder_.string()));
    }

    fs::path folder_;
    bool folderIsNew_ = false;
    std::vector<fs::path> names_;
};

void AppendText(std::string& line, const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        line.append(text);
        return;
    }
    line.push_back('"');
    for (char letter : text)
        line.append(letter == '"' ? 2 : 1, letter);
    line.push_back('"');
}

}  // namespace

std::string CsvText(const ResultTable& table)
{
    std::string text;
    AppendText(text, table.labelHead);
    if (!table.textHead.empty()) AppendText(text.append(","), table.textHead);
    for (const ResultTable::Column& column : table.columns) {
        text.push_back(',');
        AppendText(text, column.head);
    }
    if (table.hasNotes) AppendText(text.append(","), table.noteHead);
    text.push_back('\n');
    for (const ResultTable::Row& row : table.rows) {
        AppendText(text, row.label);
        if (!table.textHead.empty()) AppendText(text.append(","), row.text);
        for (double cell : row.cells)
            text.append(IsMissing(cell) ? "," : fmt::format(",{:.17g}", cell));
        if (table.hasNotes) text.push_back(',');
        AppendText(text, row.note);
        text.push_back('\n');
    }
    return text;
}

void WriteTextFile(const std::string& text, const std::string& path)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw UserError(fmt::format("cannot write {}", path));
}

void WriteCsvFiles(const std::vector<ResultTable>& tables, const std::string& folder)
{
    PendingFiles files(folder);
    for (const ResultTable& table : tables)
        files.Write(table.fileName, CsvText(table));
    files.Commit();
}

}  // namespace korvenrg::frontend
