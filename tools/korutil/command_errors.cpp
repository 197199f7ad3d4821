#include <array>
#include <vector>

#include "korutil/error.h"
#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/command_table.h"
#include "tools/korutil/file_argument.h"
#include "tools/korutil/json.h"
#include "tools/korutil/library_failure.h"

namespace kor::command {
namespace {

constexpr UINT kLocation = 1990001;  // of the failure that this command provokes
constexpr std::string_view kMissing = "korutil-missing-file.tag";

constexpr std::array kOptions = {Option{"json", "", "write the result as JSON"}};

constexpr std::string_view kHelp =
    "Opens a file that is not there, as a function of the library would, and shows what is then reported: "
    "the\n"
    "message for the user, the message for the debugger, and the errors that stand in the ring, the latest\n"
    "first. Each error has a code and a location number that tells the place that raised it.\n";

struct Report {
    DWORD code = 0;
    DWORD location = 0;
    std::string user;
    std::string debug;
};

Report reportOf(CKorError& error) {
    std::array<char, 4096> text{};
    const auto size = static_cast<UINT>(text.size());
    Report report{error.GetErrorCode(), error.GetErrorLocation(), {}, {}};
    error.GetErrorMessage(text.data(), size, nullptr);
    report.user = code_page::toUtf8(text.data());
    error.GetDebugMessage(text.data(), size);
    report.debug = code_page::toUtf8(text.data());
    return report;
}

void openMissing() {
    const FileArgument missing = targetFile(kMissing);
    CFile file;
    CFileException failure;
    if (file.Open(missing.path.c_str(), CFile::modeRead | CFile::shareDenyWrite, &failure)) {
        throw Failure(kMissing, "this file is there, and should be missing");
    }
    appThrowFileError(failure.m_lOsError, kLocation, missing.path.c_str(), 0);
}

Report provoke() {
    try {
        openMissing();
    } catch (CKorException* exception) {
        const Report report = reportOf(*exception->GetErrorObject());
        exception->Delete();
        return report;
    }
    return {};
}

// The ring is read from its end, and each error that was read is removed.
std::vector<Report> emptyRing() {
    std::vector<Report> reports;
    while (CKorError* error = appGetLastErrorObject()) {
        reports.push_back(reportOf(*error));
        if (!appRemoveLastError()) break;
    }
    appClearErrors();
    return reports;
}

std::string indented(std::string_view text) {
    std::string lines = "  ";
    for (const char c : text) {
        if (c == '\n') {
            lines += "\n  ";
        } else if (c != '\r') {
            lines += c;
        }
    }
    lines.erase(lines.find_last_not_of(" \n") + 1);
    return lines + '\n';
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find_first_of("\r\n")); }

std::string asText(const Report& thrown, const std::vector<Report>& ring) {
    std::string text = "Message for the user:\n" + indented(thrown.user) + "\nMessage for the debugger:\n" +
                       indented(thrown.debug) + "\nIn the ring, the latest first:\n";
    for (std::size_t i = 0; i < ring.size(); ++i) {
        text += "  " + std::to_string(i + 1) + ". code " + std::to_string(ring[i].code) + ", location " +
                std::to_string(ring[i].location) + ": " + firstLine(ring[i].user) + '\n';
    }
    return text;
}

std::string asJson(const Report& report) {
    std::string text = "{\"code\":" + std::to_string(report.code) +
                       ",\"location\":" + std::to_string(report.location) + ",\"user\":";
    json::appendString(text, report.user);
    text += ",\"debug\":";
    json::appendString(text, report.debug);
    return text + '}';
}

std::string asJson(const Report& thrown, const std::vector<Report>& ring) {
    std::string text = "{\"thrown\":" + asJson(thrown) + ",\"ring\":[";
    for (std::size_t i = 0; i < ring.size(); ++i) {
        if (i > 0) text += ',';
        text += asJson(ring[i]);
    }
    return text + "]}\n";
}

ExitStatus run(const Arguments& arguments, Output& output) {
    appClearErrors();
    const Report thrown = provoke();
    const std::vector<Report> ring = emptyRing();
    output.write(arguments.has("json") ? asJson(thrown, ring) : asText(thrown, ring));
    return kDone;
}

}  // namespace

const Command kErrors = {"errors", "", 0, "Shows how the library reports a failure", kHelp, kOptions, run};

}  // namespace kor::command
