#include <benchmark/benchmark.h>
#include <google/protobuf/arena.h>

#include "bench/tag_tree_peer.h"
#include "tree.pb.h"

namespace kor::bench {
namespace {

void fill(message::Tree& tree) {
    tree.set_tag(1);
    tree.set_version(1);
    for (std::uint32_t s = 0; s < kSections; ++s) {
        message::Section* section = tree.add_sections();
        section->set_tag(s);
        section->set_version(1);
        for (std::uint32_t l = 0; l < kLeaves; ++l) {
            const Leaf leaf = leafAt(s, l);
            message::Leaf* entry = section->add_leaves();
            entry->set_tag(l);
            switch (leaf.kind) {
                case LeafKind::number:
                    entry->set_number(leaf.number);
                    break;
                case LeafKind::real:
                    entry->set_real(leaf.real);
                    break;
                case LeafKind::text:
                    entry->set_text(leaf.text);
                    break;
                case LeafKind::values:
                    entry->mutable_values()->Add(leaf.values.begin(), leaf.values.end());
                    break;
            }
        }
    }
}

class ProtobufTree : public TreePeer {
  public:
    ProtobufTree() {
        fill(tree_);
        image_ = tree_.SerializeAsString();
    }

    void save() const override {
        std::string bytes;
        tree_.SerializeToString(&bytes);
        benchmark::DoNotOptimize(bytes.data());
    }

    void load() const override {
        google::protobuf::Arena arena;
        auto* tree = google::protobuf::Arena::CreateMessage<message::Tree>(&arena);
        tree->ParseFromString(image_);
        benchmark::DoNotOptimize(tree->sections_size());
    }

  private:
    message::Tree tree_;
    std::string image_;
};

}  // namespace

std::unique_ptr<TreePeer> makeTreePeer() { return std::make_unique<ProtobufTree>(); }

}  // namespace kor::bench
