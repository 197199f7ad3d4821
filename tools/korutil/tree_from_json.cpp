#include <array>
#include <limits>

#include "platform/win32.h"
#include "tools/korutil/arguments.h"
#include "tools/korutil/code_page.h"
#include "tools/korutil/tree_json.h"

namespace kor::tree {
namespace {

constexpr DWORD kAllBits = std::numeric_limits<DWORD>::max();

class Builder {
  public:
    explicit Builder(const json::Document& document) : document_(document) {}

    void root(CRootTagTree& root) const {
        const json::Value& node = document_.root();
        const Header header = headerOf(node);
        if (!header.isSection()) document_.fail(node, "the outermost node must be a section");
        setRoot(root, header.id, header.typeWord);
        children(root, node);
    }

  private:
    struct Header {
        DWORD id = 0;
        Type type = Type::kOther;
        DWORD typeWord = 0;
        bool isSection() const { return (typeWord & (kImmediateBit | kSectionBit)) == kSectionBit; }
    };

    Header headerOf(const json::Value& node) const {
        if (node.kind() != json::Kind::kObject) wrongKind(node, "a node", "an object");
        Header header;
        header.id = word(member(node, "id"), "\"id\"");
        const json::Value& type = member(node, "type");
        if (type.kind() != json::Kind::kString) wrongKind(type, "\"type\"", "a string");
        if (!typeNamed(type.text(), header.type)) {
            document_.fail(type, "\"" + std::string(type.text()) +
                                     "\" is no type; there are long, double, point, string, doubles, "
                                     "memory, section and other");
        }
        header.typeWord = header.type == Type::kOther ? otherWord(node) : namedWord(node, header.type);
        checkMembers(node, header);
        return header;
    }

    DWORD namedWord(const json::Value& node, Type type) const {
        constexpr std::array kWords = {kLongWord,    kDoubleWord, kPointWord, kStringWord,
                                       kDoublesWord, kMemoryBit,  kSectionBit};
        DWORD version = 0;
        if (const json::Value* given = node.find("version")) {
            const bool isKept = type == Type::kMemory || type == Type::kSection;
            version =
                static_cast<DWORD>(document_.integer(*given, 0, isKept ? kVersionMask : 0, "\"version\""));
        }
        return kWords[static_cast<std::size_t>(type)] | version;
    }

    DWORD otherWord(const json::Value& node) const {
        const json::Value& given = member(node, "word");
        const auto value = given.kind() == json::Kind::kString && given.text().starts_with("0x")
                               ? command::wholeNumber(given.text(), kAllBits)
                               : std::nullopt;
        if (!value) document_.fail(given, "\"word\" must be a type word such as \"0x80000099\"");
        return static_cast<DWORD>(*value);
    }

    void checkMembers(const json::Value& node, const Header& header) const {
        for (std::size_t i = 0; i < node.names().size(); ++i) {
            const std::string& name = node.names()[i];
            const bool known = name == "id" || name == "type" ||
                               (name == "version" && header.type != Type::kOther) ||
                               (name == "word" && header.type == Type::kOther) ||
                               name == (header.isSection() ? "children" : "value");
            if (known) continue;
            document_.fail(node.items()[i],
                           "a node of type " + std::string(nameOf(header.type)) + " has no \"" + name + '"');
        }
    }

    void children(CTagTree& section, const json::Value& node) const {
        const json::Value* list = node.find("children");
        if (!list) return;
        if (list->kind() != json::Kind::kArray) wrongKind(*list, "\"children\"", "an array of nodes");
        for (const json::Value& child : list->items()) {
            const Header header = headerOf(child);
            if (header.isSection()) {
                children(addSection(section, header.id, header.typeWord), child);
            } else {
                addEntry(section, header.id, contentOf(child, header));
            }
        }
    }

    Content contentOf(const json::Value& node, const Header& header) const {
        const json::Value& value = member(node, "value");
        switch (header.type) {
            case Type::kLong:
                return longContent(number32(value, "a long"));
            case Type::kDouble:
                return doubleContent(real(value));
            case Type::kPoint: {
                const auto& [x, y] = pair(value, "a point");
                return pointContent({number32(x, "a coordinate"), number32(y, "a coordinate")});
            }
            case Type::kString:
                return stringContent(text(value));
            case Type::kDoubles:
                return doubles(value);
            case Type::kMemory:
                return memoryContent(header.typeWord & kVersionMask, hex(value));
            default:
                break;
        }
        Content content;
        content.typeWord = header.typeWord;
        if (header.typeWord & kImmediateBit) {
            const auto& [first, second] = pair(value, "an immediate of type other");
            content.words = {word(first, "a data word"), word(second, "a data word")};
        } else {
            content.data = hex(value);
        }
        return content;
    }

    std::string text(const json::Value& value) const {
        if (value.kind() != json::Kind::kString) wrongKind(value, "the value of a string", "a string");
        char32_t unmappable = 0;
        const auto units = code_page::unitsOf(value.text(), value.bytes());
        const auto bytes = code_page::encode(units, unmappable);
        if (!bytes) {
            document_.fail(value, "code page " + std::to_string(GetACP()) + " cannot express " +
                                      code_page::nameOf(unmappable));
        }
        if (!code_page::readsAs(*bytes, units)) {
            document_.fail(value, "bytes written as escapes join to other characters in code page " +
                                      std::to_string(GetACP()));
        }
        if (bytes->find('\0') != std::string::npos) document_.fail(value, "a string cannot hold a zero");
        return *bytes;
    }

    double real(const json::Value& value) const {
        if (value.kind() != json::Kind::kString) return document_.real(value, "a double");
        double result = 0;
        if (!specialNamed(value.text(), result)) {
            document_.fail(value,
                           "a double is a number, \"NaN\", \"Infinity\", \"-Infinity\" or the bits of a NaN");
        }
        return result;
    }

    Content doubles(const json::Value& value) const {
        if (value.kind() != json::Kind::kArray) wrongKind(value, "the value of doubles", "an array");
        Content content;
        content.typeWord = kDoublesWord;
        content.data.reserve(8 * value.items().size());
        for (const json::Value& item : value.items())
            appendElement(content, real(item));
        return content;
    }

    std::string hex(const json::Value& value) const {
        std::string bytes;
        if (value.kind() != json::Kind::kString || !bytesOfHex(value.text(), bytes)) {
            document_.fail(value, "bytes are written as a string of hexadecimal digit pairs");
        }
        return bytes;
    }

    struct Pair {
        const json::Value& first;
        const json::Value& second;
    };

    Pair pair(const json::Value& value, std::string_view what) const {
        if (value.kind() != json::Kind::kArray || value.items().size() != 2) {
            document_.fail(value, "the value of " + std::string(what) + " is an array of two numbers");
        }
        return {value.items()[0], value.items()[1]};
    }

    LONG number32(const json::Value& value, std::string_view what) const {
        using Limits = std::numeric_limits<LONG>;
        return static_cast<LONG>(document_.integer(value, Limits::min(), Limits::max(), what));
    }

    DWORD word(const json::Value& value, std::string_view what) const {
        return static_cast<DWORD>(document_.integer(value, 0, kAllBits, what));
    }

    const json::Value& member(const json::Value& node, std::string_view name) const {
        const json::Value* value = node.find(name);
        if (!value) document_.fail(node, "the node has no \"" + std::string(name) + '"');
        return *value;
    }

    [[noreturn]] void wrongKind(const json::Value& value, std::string_view what,
                                std::string_view expected) const {
        document_.fail(value, std::string(what) + " must be " + std::string(expected) + ", not " +
                                  std::string(json::kindName(value.kind())));
    }

    const json::Document& document_;
};

}  // namespace

void buildFromJson(const json::Document& document, CRootTagTree& root) { Builder(document).root(root); }

}  // namespace kor::tree
