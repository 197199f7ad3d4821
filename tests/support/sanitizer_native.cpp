// What the sanitizers are told by the tests. Every native module has a symbol of one name for its resources:
// that is how they are found. And tests ask for more memory than there is.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
    return "detect_odr_violation=0:allocator_may_return_null=1";
}
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}
