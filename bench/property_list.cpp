/// Reading a catalogue of items from memory, in both forms: pugixml's parsing alone, libplist, ours. The latter two
/// also visit every value.

#include "platform/propertylist/PropertyListFormats.h"
#include "utils/IntegerValue.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <plist/plist.h>
#include <pugixml.hpp>
#include <string>

namespace {

using namespace quillmark;

std::string xmlCatalogue(std::int64_t items) {
    List list;
    for (std::int64_t i = 0; i < items; ++i) {
        const std::string number = std::to_string(i);
        list.push_back(Dictionary{{"Identifier", "com.quillmark.item" + number},
                                  {"Path", "/Library/Quillmark/Tools/Item " + number},
                                  {"Version", "1.14." + number},
                                  {"Build", i},
                                  {"IsRequired", i % 2 == 0},
                                  {"Systems", List{"10.4", "10.5"}}});
    }
    return PropertyListFormats().toXml(Dictionary{{"Items", list}}).value();
}

struct PlistDeleter {
    void operator()(void *node) const { plist_free(node); }
};
using Plist = std::unique_ptr<void, PlistDeleter>;

Plist peerFromXml(const std::string &document) {
    plist_t node = nullptr;
    plist_from_xml(document.c_str(), static_cast<uint32_t>(document.size()), &node);
    return Plist(node);
}
Plist peerFromBinary(const std::string &document) {
    plist_t node = nullptr;
    plist_from_bin(document.c_str(), static_cast<uint32_t>(document.size()), &node);
    return Plist(node);
}

std::string binaryCatalogue(std::int64_t items) {
    char *bytes = nullptr;
    uint32_t size = 0;
    plist_to_bin(peerFromXml(xmlCatalogue(items)).get(), &bytes, &size);
    std::string document(bytes, size);
    std::free(bytes); // NOLINT(cppcoreguidelines-no-malloc): what its own function does, whose name changes
    return document;
}

uint64_t visit(const Value &value) {
    uint64_t sum = 0;
    if (const auto *map = value.as<Dictionary>()) {
        for (const auto &[key, entry] : *map) {
            sum += key.size() + visit(entry);
        }
        return sum;
    }
    if (const auto *list = value.as<List>()) {
        for (const Value &element : *list) {
            sum += visit(element);
        }
        return sum;
    }
    if (const auto *text = value.as<std::string>()) {
        return text->size();
    }
    return static_cast<uint64_t>(integerValueOf(value));
}

struct Release {
    void operator()(char *text) const { std::free(text); } // NOLINT: libplist hands out what malloc gave
};
using Text = std::unique_ptr<char, Release>;

uint64_t visit(plist_t node) {
    uint64_t sum = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_DICT: {
        plist_dict_iter place = nullptr;
        plist_dict_new_iter(node, &place);
        const std::unique_ptr<void, decltype(&std::free)> owner(place, &std::free);
        while (true) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, place, &key, &value);
            if (value == nullptr) {
                return sum;
            }
            sum += std::char_traits<char>::length(Text(key).get()) + visit(value);
        }
    }
    case PLIST_ARRAY: {
        plist_array_iter place = nullptr;
        plist_array_new_iter(node, &place);
        const std::unique_ptr<void, decltype(&std::free)> owner(place, &std::free);
        while (true) {
            plist_t element = nullptr;
            plist_array_next_item(node, place, &element);
            if (element == nullptr) {
                return sum;
            }
            sum += visit(element);
        }
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        plist_get_string_ptr(node, &length);
        return length;
    }
    case PLIST_UINT:
        plist_get_uint_val(node, &sum);
        return sum;
    default: {
        uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return flag;
    }
    }
}

/// With the usual memory functions, since our reader has put its own there, which serve its own documents only.
void xmlFloor(benchmark::State &state) {
    const std::string document = xmlCatalogue(state.range(0));
    const auto allocate = pugi::get_memory_allocation_function();
    const auto release = pugi::get_memory_deallocation_function();
    pugi::set_memory_management_functions(std::malloc, std::free);
    for ([[maybe_unused]] auto run : state) {
        pugi::xml_document xml;
        if (!xml.load_buffer(document.c_str(), document.size())) {
            state.SkipWithError("not parsed");
        }
    }
    pugi::set_memory_management_functions(allocate, release);
}
void byPeer(benchmark::State &state, Plist (*peer)(const std::string &), const std::string &document) {
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(visit(peer(document).get()));
    }
}
/// Each reading takes a copy of the document, in place of the file's reading.
void byUs(benchmark::State &state, Plist (*peer)(const std::string &), const std::string &document) {
    const PropertyListFormats propertyList;
    uint64_t sum = 0;
    for ([[maybe_unused]] auto run : state) {
        sum = visit(propertyList.parse(document));
        benchmark::DoNotOptimize(sum);
    }
    if (sum != visit(peer(document).get())) {
        state.SkipWithError("the readers disagree");
    }
}

void xmlPeer(benchmark::State &state) { byPeer(state, peerFromXml, xmlCatalogue(state.range(0))); }
void xmlOurs(benchmark::State &state) { byUs(state, peerFromXml, xmlCatalogue(state.range(0))); }
void binaryPeer(benchmark::State &state) { byPeer(state, peerFromBinary, binaryCatalogue(state.range(0))); }
void binaryOurs(benchmark::State &state) { byUs(state, peerFromBinary, binaryCatalogue(state.range(0))); }

BENCHMARK(xmlFloor)->Name("XML of 20 items/floor")->Arg(20);
BENCHMARK(xmlPeer)->Name("XML of 20 items/peer")->Arg(20);
BENCHMARK(xmlOurs)->Name("XML of 20 items/ours")->Arg(20);
BENCHMARK(xmlFloor)->Name("XML of 10,000 items/floor")->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(xmlPeer)->Name("XML of 10,000 items/peer")->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(xmlOurs)->Name("XML of 10,000 items/ours")->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(binaryPeer)->Name("binary of 20 items/peer")->Arg(20);
BENCHMARK(binaryOurs)->Name("binary of 20 items/ours")->Arg(20);
BENCHMARK(binaryPeer)->Name("binary of 10,000 items/peer")->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(binaryOurs)->Name("binary of 10,000 items/ours")->Arg(10'000)->Unit(benchmark::kMillisecond);

} // namespace
