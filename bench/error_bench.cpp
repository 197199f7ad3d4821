// Placing an error with one text of 20 characters, and throwing one.

#include <cstdlib>

#include "bench/error_peer.h"
#include "bench/interleaved.h"
#include "korutil/error.h"

namespace {

using kor::bench::work;

constexpr char kText[] = "twenty characters ..";
static_assert(sizeof(kText) == 21);

void place() { appPlaceError(0xE0000004, 1040001, kText, nullptr, nullptr, nullptr, 0, nullptr); }

// An error's object and its text.
void allocateTwice() {
    void* object = std::malloc(sizeof(CGeneralError));
    void* text = std::malloc(sizeof(kText) + 8);
    benchmark::DoNotOptimize(object);
    benchmark::DoNotOptimize(text);
    std::free(text);
    std::free(object);
}

struct Bare {};
Bare bare;

[[gnu::noinline]] void throwBare() { throw &bare; }

void throwAndCatchBare() {
    try {
        throwBare();
    } catch (Bare* caught) {
        benchmark::DoNotOptimize(caught);
    }
}

void throwAndCatch() {
    try {
        appThrowException(0xE0000004, 1040001, kText, nullptr, nullptr, nullptr, 0, nullptr);
    } catch (CKorException* exception) {
        benchmark::DoNotOptimize(exception);
        exception->Delete();
    }
}

bool measurePlacing() {
    std::vector<kor::bench::Limit> limits{{work("two pairs of malloc and free", allocateTwice), 2.0}};
    const bool hasPeer = kor::bench::errorPeerIsThere();
    if (hasPeer) {
        limits.push_back(
            {work("OpenSSL's error queue, with data", [] { kor::bench::raiseInPeer(kText); }), 0.2});
    }
    const bool kept = kor::bench::compare(work("error placed, one text of 20 characters", place), limits);
    if (!hasPeer)
        kor::bench::skipped("error placed", "OpenSSL's error queue", "OpenSSL's headers were not found");
    return kept;
}

bool measureThrowing() {
    return kor::bench::compare(work("CKorException placed, thrown and caught", throwAndCatch),
                               {{work("bare throw and catch", throwAndCatchBare), 1.25}});
}

}  // namespace

int main() {
    const bool placing = measurePlacing();
    const bool throwing = measureThrowing();
    appClearErrors();
    return placing && throwing ? 0 : 1;
}
