// GLib's key file, loaded when it is there: its five functions need no headers.
#include <dlfcn.h>

#include <cstdlib>

#include "bench/profile_peer.h"

namespace {

struct KeyFile;

class GlibPeer : public kor::bench::ProfilePeer {
  public:
    GlibPeer(void* library, const std::string& file) : file_(file) {
        find(library, "g_key_file_new", make_);
        find(library, "g_key_file_load_from_file", load_);
        find(library, "g_key_file_set_string", set_);
        find(library, "g_key_file_save_to_file", save_);
        find(library, "g_key_file_free", free_);
    }
    bool isWhole() const { return make_ && load_ && set_ && save_ && free_; }

    double read(int) override { return 0; }
    void write(const char* value) override {
        constexpr int kKeepComments = 1;
        KeyFile* const file = make_();
        if (!load_(file, file_.c_str(), kKeepComments, nullptr)) std::abort();
        set_(file, kor::bench::kSection, kor::bench::kKey, value);
        if (!save_(file, file_.c_str(), nullptr)) std::abort();
        free_(file);
    }

  private:
    template <class Function>
    static void find(void* library, const char* name, Function*& function) {
        function = reinterpret_cast<Function*>(dlsym(library, name));
    }

    const std::string file_;
    KeyFile* (*make_)() = nullptr;
    int (*load_)(KeyFile*, const char*, int flags, void** error) = nullptr;
    void (*set_)(KeyFile*, const char* group, const char* key, const char* value) = nullptr;
    int (*save_)(KeyFile*, const char*, void** error) = nullptr;
    void (*free_)(KeyFile*) = nullptr;
};

}  // namespace

std::unique_ptr<kor::bench::ProfilePeer> kor::bench::makeGlibPeer(const std::string& file,
                                                                  std::string& reason) {
    reason = "libglib-2.0.so.0 was not found";
    void* const library = dlopen("libglib-2.0.so.0", RTLD_NOW);
    if (!library) return nullptr;
    auto peer = std::make_unique<GlibPeer>(library, file);
    return peer->isWhole() ? std::move(peer) : nullptr;
}
