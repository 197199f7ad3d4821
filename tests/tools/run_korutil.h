#pragma once
// Starts the command as a user would, and hands over what it said.
#include <string>
#include <utility>
#include <vector>

namespace kor::test {

/// A scratch folder by its native path, in which commands are started; also the library's home for them.
class WorkFolder {
  public:
    WorkFolder();
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    std::string path(const std::string& name) const { return path_ + '/' + name; }
    void write(const std::string& name, const std::string& bytes) const;
    std::string read(const std::string& name) const;
    /// The names in the folder, sorted.
    std::vector<std::string> names() const;

  private:
    std::string path_;
};

struct Outcome {
    int status = -1;  ///< exit status; minus the signal's number when one ended the process
    std::string out;
    std::string err;
};

struct Call {
    std::vector<std::string> arguments;
    std::string input = {};
    std::vector<std::pair<std::string, std::string>> environment = {};
    std::string outputFile = {};    ///< standard output goes there instead of into the outcome
    bool closedOutput = false;      ///< the process starts without a standard output
    bool brokenPipe = false;        ///< standard output is a pipe that nobody reads
    std::size_t fileSizeLimit = 0;  ///< bytes that a file may grow to; 0 for no limit
    int signal = 0;                 ///< sent to the process after a delay in microseconds
    unsigned delay = 0;
    unsigned user = 0;  ///< user and group that runs it, when this process may choose; 0 keeps the own
};

/// Runs the command in the folder and waits for its end.
Outcome run(const WorkFolder& folder, const Call& call);
Outcome run(const WorkFolder& folder, std::vector<std::string> arguments);

}  // namespace kor::test
