// A tree of 1,000 sections with 100 leaves each, saved to a memory file and loaded again.

#include <array>
#include <string>
#include <vector>

#include "bench/interleaved.h"
#include "bench/tag_tree_peer.h"
#include "korutil/framework/mem_file.h"
#include "korutil/tag_tree.h"

namespace {

using kor::bench::leafAt;
using kor::bench::LeafKind;
using kor::bench::work;

constexpr int kGrowth = 1 << 20;

void build(CRootTagTree& root) {
    for (DWORD s = 0; s < kor::bench::kSections; ++s) {
        CTagTree* section = root.CreateSection(s, 1);
        for (DWORD l = 0; l < kor::bench::kLeaves; ++l) {
            const kor::bench::Leaf leaf = leafAt(s, l);
            switch (leaf.kind) {
                case LeafKind::number:
                    section->SaveLong(l, leaf.number);
                    break;
                case LeafKind::real:
                    section->SaveDouble(l, leaf.real);
                    break;
                case LeafKind::text:
                    section->SaveString(l, leaf.text.c_str());
                    break;
                case LeafKind::values:
                    section->SaveDblArray(l, leaf.values.data(), static_cast<int>(leaf.values.size()));
                    break;
            }
        }
    }
}

std::vector<BYTE> saved(CRootTagTree& root) {
    CMemFile file(kGrowth);
    root.AttachTo(file, -1);
    root.WriteTree();
    std::vector<BYTE> image(static_cast<std::size_t>(file.GetLength()));
    file.SeekToBegin();
    file.Read(image.data(), static_cast<UINT>(image.size()));
    return image;
}

bool measureSaving(CRootTagTree& root, const std::vector<BYTE>& image, const kor::bench::TreePeer* peer) {
    const auto save = work("tree saved to a memory file", [&root] {
        CMemFile file(kGrowth);
        root.AttachTo(file, -1);
        root.WriteTree();
        benchmark::ClobberMemory();
    });
    const auto copy = work("plain write of the bytes", [&image] {
        CMemFile file(kGrowth);
        file.Write(image.data(), static_cast<UINT>(image.size()));
        benchmark::ClobberMemory();
    });
    std::vector<kor::bench::Limit> limits{{copy, 14.0}};
    if (peer) limits.push_back({work("protobuf, serialised", [peer] { peer->save(); }), 1.0});
    return kor::bench::compare(save, limits);
}

bool measureLoading(std::vector<BYTE>& image, const kor::bench::TreePeer* peer) {
    const auto load = work("tree loaded and freed", [&image] {
        CMemFile file(image.data(), static_cast<UINT>(image.size()));
        CRootTagTree root;
        root.AttachTo(file, -1);
        root.ReadTree();
        benchmark::DoNotOptimize(root.GetChildCount());
    });
    std::vector<kor::bench::Limit> limits;
    if (peer) limits.push_back({work("protobuf with its arena", [peer] { peer->load(); }), 0.6});
    return kor::bench::compare(load, limits);
}

}  // namespace

int main() {
    const auto peer = kor::bench::makeTreePeer();
    if (!peer) kor::bench::skipped("tag tree", "protobuf", "its compiler or library is not installed");
    CRootTagTree root(1, 1);
    build(root);
    std::vector<BYTE> image = saved(root);
    const bool saving = measureSaving(root, image, peer.get());
    const bool loading = measureLoading(image, peer.get());
    return saving && loading ? 0 : 1;
}
