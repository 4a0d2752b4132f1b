#include "payload/Identity.h"

#include "ToolIdentity.h"

#include <charconv>
#include <cstring>
#include <link.h>
#include <vector>

namespace updateqm {

namespace {

using Header = ElfW(Ehdr);
using Section = ElfW(Shdr);

/// A structure somewhere in the file. \returns nothing when it would end behind the file's end.
template <class Structure>
std::optional<Structure> structureAt(std::string_view file, size_t offset) {
    Structure structure{};
    if (offset > file.size() || file.size() - offset < sizeof structure) {
        return std::nullopt;
    }
    std::memcpy(&structure, file.data() + offset, sizeof structure);
    return structure;
}

std::string_view contentsOf(std::string_view file, const Section &section) {
    if (section.sh_type == SHT_NOBITS || section.sh_offset > file.size() ||
        section.sh_size > file.size() - section.sh_offset) {
        return {};
    }
    return file.substr(section.sh_offset, section.sh_size);
}

std::optional<Section> sectionAt(std::string_view file, const Header &header, size_t index) {
    return header.e_shoff > file.size() ? std::nullopt
                                        : structureAt<Section>(file, header.e_shoff + index * sizeof(Section));
}

/// The contents of the section with that name.
std::string_view sectionNamed(std::string_view file, std::string_view name) {
    const auto header = structureAt<Header>(file, 0);
    constexpr unsigned char kClass = sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32;
    if (!header || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 || header->e_ident[EI_CLASS] != kClass ||
        header->e_shentsize != sizeof(Section)) {
        return {};
    }
    const auto nameSection = sectionAt(file, *header, header->e_shstrndx);
    const std::string_view names = nameSection ? contentsOf(file, *nameSection) : std::string_view();
    for (size_t index = 0; index < header->e_shnum; ++index) {
        const auto section = sectionAt(file, *header, index);
        if (section && section->sh_name < names.size()) {
            const std::string_view rest = names.substr(section->sh_name);
            if (rest.substr(0, rest.find('\0')) == name) {
                return contentsOf(file, *section);
            }
        }
    }
    return {};
}

std::vector<unsigned long> numbersOf(std::string_view version) {
    std::vector<unsigned long> numbers;
    for (size_t begin = 0; begin <= version.size();) {
        const size_t end = std::min(version.find('.', begin), version.size());
        unsigned long number = 0;
        std::from_chars(version.data() + begin, version.data() + end, number);
        numbers.push_back(number);
        begin = end + 1;
    }
    while (!numbers.empty() && numbers.back() == 0) { // 1.0 is 1
        numbers.pop_back();
    }
    return numbers;
}

} // namespace

std::optional<Identity> identityIn(std::string_view program) {
    std::string_view text = sectionNamed(program, ".quillmark");
    constexpr std::string_view kMark = QUILLMARK_TOOL_MARK;
    constexpr std::string_view kEnd("\x01\0", 2);
    if (!text.starts_with(kMark) || !text.ends_with(kEnd)) {
        return std::nullopt;
    }
    text.remove_prefix(kMark.size());
    text.remove_suffix(kEnd.size());
    const size_t blank = text.find(' ');
    if (blank == std::string_view::npos) {
        return std::nullopt;
    }
    return Identity{std::string(text.substr(0, blank)), std::string(text.substr(blank + 1))};
}

bool isOlder(std::string_view version, std::string_view than) { return numbersOf(version) < numbersOf(than); }

} // namespace updateqm
