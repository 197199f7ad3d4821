// Looking an entry up in an info store of 10,000: by its number against testing the two key words of records
// that are laid end to end, by its name against strcmp over the same records. What is looked for is the last
// one.
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/interleaved.h"
#include "korutil/info_store.h"

namespace {

constexpr int kCount = 10000;
constexpr std::size_t kRecord = 32;
constexpr double kCeilingById = 1.3;
constexpr double kCeilingByName = 0.3;
constexpr char kData[20] = {};

struct Destroy {
    void operator()(ListBlock* store) const { lisDestroy(&store); }
};
using Store = std::unique_ptr<ListBlock, Destroy>;

struct Name {
    char text[24];
};

Name nameOf(int number) {
    Name name;
    std::snprintf(name.text, sizeof name.text, "Objective-%05d", number);
    return name;
}

// @param key  makes the key of an entry
template <class KeyOf>
Store makeStore(KeyOf key) {
    ListBlock* store = nullptr;
    for (int i = 1; i <= kCount; ++i)
        infSet(&store, key(i), kData, sizeof kData);
    return Store(store);
}

std::vector<char> makeRecords() {
    std::vector<char> records(kCount * kRecord);
    for (DWORD i = 1; i <= kCount; ++i) {
        const DWORD words[3] = {kRecord, 0, i};
        std::memcpy(records.data() + (i - 1) * kRecord, words, sizeof words);
    }
    return records;
}

const char* findNumber(const std::vector<char>& records, DWORD number) {
    for (const char* record = records.data(); record != records.data() + records.size(); record += kRecord) {
        DWORD key[2];
        std::memcpy(key, record + sizeof(DWORD), sizeof key);
        if (key[0] == 0 && key[1] == number) return record;
    }
    return nullptr;
}

const char* findName(ListBlock* store, DWORD slot, const char* name) {
    const char* const data = reinterpret_cast<const char*>(store) + store->dataOffset;
    for (const char* record = data; record != data + store->dataUsed; record += slot)
        if (std::strcmp(record + sizeof(DWORD), name) == 0) return record;
    return nullptr;
}

}  // namespace

int main() {
    const Store byId = makeStore([](int i) { return static_cast<UINT_PTR>(i); });
    Name made;
    const Store byName = makeStore([&made](int i) {
        made = nameOf(i);
        return infName(made.text);
    });
    const std::vector<char> records = makeRecords();
    const Name last = nameOf(kCount);
    const DWORD slot = byName->dataUsed / kCount;
    bool kept = kor::bench::compare(
        kor::bench::work("info store of 10,000 entries, by number",
                         [&] { benchmark::DoNotOptimize(infGetSize(byId.get(), kCount)); }),
        {{kor::bench::work("two key words of 10,000 records of 32 bytes",
                           [&] { benchmark::DoNotOptimize(findNumber(records, kCount)); }),
          kCeilingById}});
    kept =
        kor::bench::compare(
            kor::bench::work("info store of 10,000 entries, by name",
                             [&] { benchmark::DoNotOptimize(infGetSize(byName.get(), infName(last.text))); }),
            {{kor::bench::work("strcmp over its records",
                               [&] { benchmark::DoNotOptimize(findName(byName.get(), slot, last.text)); }),
              kCeilingByName}}) &&
        kept;
    return kept ? 0 : 1;
}
