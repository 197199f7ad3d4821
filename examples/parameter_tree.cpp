// Builds a parameter tree, stores it, and reads it back. With a file name as argument the tree also stays in
// that file, where `korutil tree show` finds it.
#include <cstdio>

#include "korutil/framework/file.h"
#include "korutil/framework/file_exception.h"
#include "korutil/framework/mem_file.h"
#include "korutil/tag_tree.h"

namespace {

// The ids are the application's choice.
enum Tag : DWORD { kSetup = 1000, kTitle = 1, kChannel = 400, kWavelength = 2, kExposure = 4, kMarks = 5 };

constexpr DWORD kSetupVersion = 2;
constexpr DWORD kSectionKind = 0x40000000;
constexpr DWORD kArrayKind = 0x10000000;
constexpr DWORD kImmediateKind = 0x80000000;

void store(CFile& file) {
    const double marks[] = {12.185, -4.27, 12.566, -4.27};
    CRootTagTree root(kSetup, kSetupVersion);
    root.SaveString(kTitle, "calibration");
    CTagTree* channel = root.CreateSection(kChannel, 1);
    channel->SaveDouble(kWavelength, 488.0);
    channel->SaveLong(kExposure, 120);
    channel->SaveDblArray(kMarks, marks, 4);
    root.AttachTo(file, -1);
    root.WriteTree();
}

void load(CFile& file) {
    CRootTagTree root;
    root.AttachTo(file, -1);
    file.SeekToBegin();
    root.ReadTree();
    std::printf("set-up %u, version %u\n", static_cast<unsigned>(root.GetTagID()),
                static_cast<unsigned>(root.GetVersion()));
    if (const CTagTree* title = root.FindTag(kTitle, kArrayKind)) {
        std::printf("  title: %s\n", static_cast<const char*>(title->GetString()));
    }
    const CTagTree* channel = root.FindTag(kChannel, kSectionKind);
    if (!channel) return;
    const CTagTree* wavelength = channel->FindTag(kWavelength, kImmediateKind);
    const CTagTree* exposure = channel->FindTag(kExposure, kImmediateKind);
    if (wavelength) std::printf("  wavelength: %g nm\n", wavelength->GetDouble());
    if (exposure) std::printf("  exposure: %d ms\n", static_cast<int>(exposure->GetLong()));
    if (const CTagTree* marks = channel->FindTag(kMarks, kArrayKind)) {
        double values[4] = {};
        const int count = marks->GetDblArray(values, 4);
        for (int i = 0; i + 1 < count; i += 2)
            std::printf("  mark at %g, %g mm\n", values[i], values[i + 1]);
    }
}

void storeAndLoad(CFile& file) {
    store(file);
    std::printf("stored in %d bytes\n", static_cast<int>(file.GetLength()));
    load(file);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc > 1) {
            CFile file(argv[1], CFile::modeCreate | CFile::modeReadWrite | CFile::shareExclusive);
            storeAndLoad(file);
        } else {
            CMemFile file;
            storeAndLoad(file);
        }
        return 0;
    } catch (CException* exception) {
        char text[512];
        exception->GetErrorMessage(text, sizeof text);
        std::fprintf(stderr, "parameter_tree: %s\n", text);
        exception->Delete();
        return 1;
    }
}
