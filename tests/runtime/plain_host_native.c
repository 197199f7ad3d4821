/* Loads the library given, uses it and unloads it, more often than there is room for what a round would leave
   behind. */
#include <dlfcn.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

typedef void (*Member)(void* object);

static int fail(int round, const char* what) {
    const char* reason = dlerror();
    fprintf(stderr, "round %d: %s: %s\n", round, what, reason ? reason : "");
    return 1;
}

static Member member(void* library, const char* name) {
    void* address = dlsym(library, name);
    Member function = NULL;
    memcpy(&function, &address, sizeof function);
    return function;
}

static int useLibrary(void* library) {
    int (*query)(const void*, void*) = NULL;
    void* address = dlsym(library, "utlVirtualQuery");
    const Member makeGuard = member(library, "_ZN19CKorWinToCExceptionC1Ev");
    const Member endGuard = member(library, "_ZN19CKorWinToCExceptionD1Ev");
    if (!address || !makeGuard || !endGuard) return 0;
    memcpy(&query, &address, sizeof query);
    size_t description[11];
    void* guard[4];
    makeGuard(guard);
    const int told = query(&guard, description);
    endGuard(guard);
    return told;
}

int main(int count, char** arguments) {
    if (count != 2) return 2;
    for (int round = 0; round < 200; ++round) {
        void* library = dlopen(arguments[1], RTLD_NOW);
        if (!library) return fail(round, "not loaded");
        if (!useLibrary(library)) return fail(round, "not usable");
        if (dlclose(library) != 0) return fail(round, "not closed");
        if (dlopen(arguments[1], RTLD_NOW | RTLD_NOLOAD)) return fail(round, "still there");
    }
    return 0;
}
