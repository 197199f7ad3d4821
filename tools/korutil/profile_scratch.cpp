#include "tools/korutil/profile_scratch.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "tools/korutil/input.h"
#include "tools/korutil/library_failure.h"

namespace kor::profile {
namespace {

using command::Failure;

// The library brings each of its writes to the disk: in memory that costs nothing.
std::string newFolder() {
    std::error_code failed;
    const std::filesystem::path place = std::filesystem::temp_directory_path(failed);
    for (const std::string& parent : {std::string("/dev/shm"), failed ? "/tmp" : place.string()}) {
        std::string folder = parent + "/korutil-XXXXXX";
        if (::mkdtemp(folder.data())) return folder;
    }
    throw Failure(failed ? "/tmp" : place.string(), command::systemReason(errno));
}

}  // namespace

ScratchFolder::ScratchFolder() : path(newFolder()) {}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

ScratchProfile::ScratchProfile(const command::FileArgument& target)
    : target_(target), native_(folder_.path + "/profile.ini"), path_(command::libraryPath(native_, native_)) {
    const std::string bytes = target.found ? command::readInput(target.native) : std::string();
    std::ofstream file(native_, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush())
        throw Failure(native_, "it cannot be written");
}

void ScratchProfile::commit() const {
    const std::string bytes = command::readInput(native_);
    command::FileReplacement replacement(target_);
    command::guarded(target_.shown, [&] {
        CFile file;
        CFileException failure;
        if (!file.Open(replacement.path().c_str(), CFile::modeReadWrite | CFile::shareExclusive, &failure))
            throw Failure(target_.shown, command::reasonOf(failure));
        file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
        file.Close();
    });
    replacement.commit();
}

}  // namespace kor::profile
