#include "platform/process/AtEnd.h"
#include "platform/propertylist/PropertyListFormats.h"
#include "platform/propertylist/PropertyListLimits.h"
#include "platform/propertylist/PropertyListText.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <pugixml.hpp>

namespace quillmark {

namespace {

// pugixml takes its memory functions once for the whole process, so each thread tells them whose budget to charge.
thread_local PropertyListBudget *chargedBudget = nullptr;

/// Allocations remember their size in front of them.
constexpr size_t kSizeHeader = alignof(std::max_align_t);

void *allocateCharged(size_t size) {
    const std::int64_t bytes = static_cast<std::int64_t>(size) + static_cast<std::int64_t>(kSizeHeader);
    if (chargedBudget == nullptr || !chargedBudget->take(bytes)) {
        return nullptr;
    }
    auto *block = static_cast<char *>(std::malloc(size + kSizeHeader)); // NOLINT: pugixml asks for malloc's contract
    if (block == nullptr) {
        return nullptr;
    }
    *reinterpret_cast<size_t *>(block) = size; // NOLINT: the header of the block
    return block + kSizeHeader;
}

void releaseCharged(void *pointer) {
    if (pointer == nullptr) {
        return;
    }
    char *block = static_cast<char *>(pointer) - kSizeHeader;
    if (chargedBudget != nullptr) {
        chargedBudget->giveBack(static_cast<std::int64_t>(*reinterpret_cast<size_t *>(block) + kSizeHeader)); // NOLINT
    }
    std::free(block); // NOLINT
}

/// Turns the parsed elements into values.
class Converter {
public:
    explicit Converter(PropertyListBudget &budget) : m_budget(budget) {}

    /// Nothing stands for any fault.
    Value value(pugi::xml_node element, int depth);

private:
    Value dictionary(pugi::xml_node element, int depth);
    Value array(pugi::xml_node element, int depth);
    Value scalar(std::string_view type, std::string_view raw);
    std::optional<std::string> string(std::string_view raw);
    std::optional<std::string_view> textOf(pugi::xml_node element, std::string &joined);

    PropertyListBudget &m_budget;
};

/// The first element from that node on among its siblings.
pugi::xml_node elementFrom(pugi::xml_node node) {
    while (node && node.type() != pugi::node_element) {
        node = node.next_sibling();
    }
    return node;
}

pugi::xml_node elementBehind(pugi::xml_node node) { return elementFrom(node.next_sibling()); }

bool isText(pugi::xml_node piece) { return piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata; }

/// The text inside an element, in one piece; nothing when there are elements inside. `joined` keeps it alive where a
/// comment or a CDATA section had cut it.
std::optional<std::string_view> Converter::textOf(pugi::xml_node element, std::string &joined) {
    if (!element.first_child()) {
        return element.value();
    }
    // No reference is resolved in a CDATA section; its ampersands go on as references.
    constexpr std::string_view kAmpersand = "&amp;";
    const std::string_view first = element.value();
    size_t length = first.size();
    for (const pugi::xml_node piece : element) {
        const std::string_view text = piece.value();
        const auto ampersands = piece.type() == pugi::node_cdata ? std::count(text.begin(), text.end(), '&') : 0;
        length += text.size() + static_cast<size_t>(ampersands) * (kAmpersand.size() - 1);
        if (!isText(piece)) {
            return std::nullopt;
        }
    }
    if (!m_budget.take(static_cast<std::int64_t>(length))) {
        return std::nullopt;
    }
    joined.reserve(length);
    joined = first;
    for (const pugi::xml_node piece : element) {
        for (const char character : std::string_view(piece.value())) {
            const bool isBare = character == '&' && piece.type() == pugi::node_cdata;
            joined += isBare ? kAmpersand : std::string_view(&character, 1);
        }
    }
    return joined;
}

Value Converter::value(pugi::xml_node element, int depth) {
    const std::string_view type = element.name();
    if (type == "dict") {
        return dictionary(element, depth);
    }
    if (type == "array") {
        return array(element, depth);
    }
    std::string joined;
    const auto raw = textOf(element, joined);
    return raw ? scalar(type, *raw) : Value();
}

std::optional<std::string> Converter::string(std::string_view raw) {
    if (!m_budget.take(cost::text(static_cast<std::int64_t>(raw.size())))) {
        return std::nullopt;
    }
    return propertyListString(raw);
}

Value Converter::scalar(std::string_view type, std::string_view raw) {
    if (type == "string") {
        return string(raw);
    }
    if (type == "true" || type == "false") {
        return type == "true";
    }
    if (type == "data") {
        return m_budget.take(cost::data(static_cast<std::int64_t>(raw.size()))) ? propertyListData(raw) : Value();
    }
    if (type == "date") {
        return m_budget.take(cost::kScalar) ? propertyListDate(raw) : Value();
    }
    if (type == "integer") {
        return propertyListInteger(raw);
    }
    return type == "real" ? propertyListReal(raw) : Value();
}

Value Converter::dictionary(pugi::xml_node element, int depth) {
    if (depth >= kMaximumPropertyListDepth || !m_budget.take(cost::kDictionary)) {
        return {};
    }
    std::vector<Dictionary::value_type> entries;
    pugi::xml_node content;
    for (pugi::xml_node key = elementFrom(element.first_child()); key; key = elementBehind(content)) {
        content = elementBehind(key);
        std::string joined;
        // A growing block has room for twice its entries, here and in a list.
        const auto raw = std::string_view(key.name()) == "key" && content ? textOf(key, joined) : std::nullopt;
        auto name = raw && m_budget.take(2 * cost::kEntry) ? string(*raw) : std::nullopt;
        Value entry = name ? value(content, depth + 1) : Value();
        if (entry.isNothing()) {
            return {};
        }
        entries.emplace_back(*std::move(name), std::move(entry));
    }
    return Dictionary(std::move(entries));
}

Value Converter::array(pugi::xml_node element, int depth) {
    if (depth >= kMaximumPropertyListDepth || !m_budget.take(cost::kArray)) {
        return {};
    }
    List list;
    for (auto child = elementFrom(element.first_child()); child; child = elementBehind(child)) {
        Value entry = m_budget.take(2 * cost::kElement) ? value(child, depth + 1) : Value();
        if (entry.isNothing()) {
            return {};
        }
        list.push_back(std::move(entry));
    }
    return list;
}

pugi::xml_node onlyElement(pugi::xml_node parent) {
    const pugi::xml_node found = elementFrom(parent.first_child());
    return elementBehind(found) ? pugi::xml_node() : found;
}

} // namespace

Value parseXmlPropertyList(std::string document) {
    static std::once_flag isCharged;
    std::call_once(isCharged, pugi::set_memory_management_functions, allocateCharged, releaseCharged);
    PropertyListBudget budget;
    if (document.empty() || !budget.take(std::ssize(document))) {
        return {};
    }
    chargedBudget = &budget;
    const AtEnd endOfCharge([] { chargedBudget = nullptr; });
    constexpr unsigned int kFlags =
        pugi::parse_cdata | pugi::parse_eol | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata;
    pugi::xml_document xml;
    if (!xml.load_buffer_inplace(document.data(), document.size(), kFlags)) {
        return {};
    }
    const pugi::xml_node root = onlyElement(xml);
    const pugi::xml_node content = std::string_view(root.name()) == "plist" ? onlyElement(root) : pugi::xml_node();
    return content ? Converter(budget).value(content, 0) : Value();
}

} // namespace quillmark
