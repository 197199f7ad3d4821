// korutil: the library's files and settings from the command line.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "tools/korutil/command.h"
#include "tools/korutil/failure.h"
#include "tools/korutil/help.h"
#include "tools/korutil/library_failure.h"
#include "tools/korutil/utf8.h"

namespace kor::command {
namespace {

constexpr std::string_view kVersion = KORUTIL_VERSION;

// A standard stream that the caller closed must not become the number of a file that a command opens;
// standard output is then open for reading only, so that writing to it still fails.
void occupyStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", descriptor == STDOUT_FILENO ? O_RDONLY : O_RDWR);
    }
}

bool isGroup(std::string_view word) {
    const auto commands = allCommands();
    return std::any_of(commands.begin(), commands.end(),
                       [&](const Command* c) { return c->name.starts_with(std::string(word) + ' '); });
}

const Command* findCommand(std::string_view name) {
    for (const Command* command : allCommands()) {
        if (command->name == name) return command;
    }
    return nullptr;
}

// What the usage line calls the operand of that number.
std::string missingOperand(const Command& command, std::size_t index) {
    std::string_view names = command.operands;
    for (; index > 0; --index)
        names.remove_prefix(names.find(' ') + 1);
    return std::string(names.substr(0, names.find(' ')));
}

void refuseMore(std::span<const std::string_view> words, std::size_t most) {
    if (words.size() > most) {
        throw UsageError("'" + std::string(words[most]) + "' is not expected after " +
                         std::string(words[most - 1]) + "; see korutil --help");
    }
}

// The library takes 1252 for any code page that it does not know: texts would be stored wrong without a word.
void checkCodePage() {
    constexpr const char* kVariable = "KORUTIL_CODEPAGE";
    constexpr std::string_view kKnown[] = {"1252", "932", "936", "65001"};
    const char* given = std::getenv(kVariable);
    if (!given || *given == '\0' ||
        std::find(std::begin(kKnown), std::end(kKnown), given) != std::end(kKnown))
        return;
    throw Failure(kVariable, "'" + std::string(given) + "' is no code page; use 1252, 932, 936 or 65001");
}

ExitStatus runCommand(const Command& command, std::span<const std::string_view> words, Output& output) {
    const std::string hint = "; see korutil " + std::string(command.name) + " --help";
    std::vector<Option> options(command.options.begin(), command.options.end());
    options.push_back({kHelpOption, "", ""});
    try {
        const Arguments arguments(words, options);
        if (arguments.has(kHelpOption)) {
            output.write(commandHelp(command));
            return kDone;
        }
        if (arguments.operands().size() < command.operandCount) {
            throw UsageError(missingOperand(command, arguments.operands().size()) + " is missing");
        }
        if (arguments.operands().size() > command.operandCount) {
            throw UsageError("too many operands, '" + arguments.operand(command.operandCount) +
                             "' is not expected");
        }
        for (const Option& option : options) {
            if (option.isRequired && !arguments.has(option.name))
                throw UsageError("option --" + std::string(option.name) + " is missing");
        }
        return command.run(arguments, output);
    } catch (const UsageError& error) {
        throw UsageError(std::string(command.name) + ": " + error.what() + hint);
    }
}

// @param failed  receives the status of a failure of the command
ExitStatus dispatch(std::span<const std::string_view> words, Output& output, ExitStatus& failed) {
    for (const std::string_view word : words) {
        if (!utf8::isValid(word)) throw UsageError("an argument is not UTF-8; see korutil --help");
    }
    if (words.empty()) throw UsageError("a command is missing; see korutil --help");
    std::string name(words[0]);
    if (name == "--help" || name == "--version") refuseMore(words, 1);
    const auto answer = [&output](const std::string& text) {
        output.write(text);
        return kDone;
    };
    if (name == "--help") return answer(listHelp(""));
    if (name == "--version") return answer("korutil " + std::string(kVersion) + '\n');
    std::size_t taken = 1;
    if (isGroup(name)) {
        const std::string group = name;
        if (words.size() > 1 && words[1] == "--help") {
            refuseMore(words, 2);
            return answer(listHelp(group));
        }
        if (words.size() < 2)
            throw UsageError("a command is missing after " + group + "; see korutil " + group + " --help");
        name += ' ' + std::string(words[1]);
        taken = 2;
    }
    const Command* command = findCommand(name);
    if (!command) throw UsageError("unknown command '" + name + "'; see korutil --help");
    failed = command->failed;
    checkCodePage();
    return runCommand(*command, words.subspan(taken), output);
}

int exitStatusOf(std::span<const std::string_view> words) {
    ExitStatus failed = kFailed;
    try {
        Output output;
        const ExitStatus status = dispatch(words, output, failed);
        output.flush();
        return status;
    } catch (const UsageError& error) {
        reportLine(error.what());
        return kWrongUsage;
    } catch (CException* exception) {
        reportLine(reasonOf(*exception));
        exception->Delete();
    } catch (const std::bad_alloc&) {
        reportLine("memory is short");
    } catch (const std::exception& error) {
        reportLine(error.what());
    }
    return failed;
}

}  // namespace
}  // namespace kor::command

int main(int argc, char** argv) {
    kor::command::occupyStandardStreams();
    // A closed pipe and a file that may not grow are then failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    const std::vector<std::string_view> words(argv + std::min(argc, 1), argv + argc);
    return kor::command::exitStatusOf(words);
}
