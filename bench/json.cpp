/// A flat object between a dictionary and its text: QJsonDocument, RapidJSON, ours.
///
/// The peer does what the launcher would have it do in our place: it begins and ends with a Dictionary and a text. The
/// sides "QJsonObject" and "RapidJSON" stop at objects of their own when they decode, which spares them allocations for
/// each member.

#include "accounts/JSONEncoder.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace {

using namespace quillmark;

/// What a keychain's item holds, then more of the same kinds.
Dictionary members(std::int64_t count) {
    std::vector<Dictionary::value_type> entries{{"encryptionKey", "mZ0uX9/Qp3+5kV7c1w=="},
                                                {"keepSignedIn", true},
                                                {"password", "correct \"horse\" battery"},
                                                {"skipAuth", false},
                                                {"version", 1303}};
    for (std::int64_t i = std::ssize(entries); i < count; ++i) {
        Value &value = entries.emplace_back("member" + std::to_string(i), Value()).second;
        switch (i % 4) {
        case 0:
            value = i;
            break;
        case 1:
            value = i % 8 == 1;
            break;
        case 2:
            value = static_cast<double>(i) / 4;
            break;
        default:
            value = "a text, number " + std::to_string(i);
        }
    }
    return Dictionary(std::move(entries));
}

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void writeTo(Writer &writer, const Value &value) {
    if (const auto *text = value.as<std::string>()) {
        writer.String(text->data(), static_cast<rapidjson::SizeType>(text->size()));
    } else if (const auto *boolean = value.as<bool>()) {
        writer.Bool(*boolean);
    } else if (const auto *real = value.as<double>()) {
        writer.Double(*real);
    } else {
        writer.Int64(*value.as<std::int64_t>());
    }
}

std::string byRapidJson(const Dictionary &dictionary) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    for (const auto &[key, value] : dictionary) {
        writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
        writeTo(writer, value);
    }
    writer.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

QJsonValue qJsonValue(const Value &value) {
    if (const auto *text = value.as<std::string>()) {
        return QString::fromStdString(*text);
    }
    if (const auto *boolean = value.as<bool>()) {
        return *boolean;
    }
    const auto *real = value.as<double>();
    return real != nullptr ? QJsonValue(*real) : QJsonValue(qint64{*value.as<std::int64_t>()});
}

std::string byQJsonDocument(const Dictionary &dictionary) {
    QJsonObject object;
    for (const auto &[key, value] : dictionary) {
        object.insert(QString::fromStdString(key), qJsonValue(value));
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

void encode(benchmark::State &state, std::string (*encoder)(const Dictionary &)) {
    const Dictionary dictionary = members(state.range(0));
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(encoder(dictionary).size());
    }
    if (JSONEncoder::createObjFromJSONStr(encoder(dictionary)) != dictionary) {
        state.SkipWithError("the text says something else");
    }
}

QJsonObject qJsonObject(const std::string &text) {
    return QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), std::ssize(text))).object();
}

std::int64_t decodedByRapidJson(const std::string &text) {
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    return document.MemberCount();
}
std::int64_t decodedByQJsonObject(const std::string &text) { return qJsonObject(text).size(); }
std::int64_t decodedByQJsonDocument(const std::string &text) {
    const QJsonObject object = qJsonObject(text);
    Dictionary dictionary;
    for (auto member = object.begin(); member != object.end(); ++member) {
        Value &value = dictionary[member.key().toStdString()];
        if (member->isString()) {
            value = member->toString().toStdString();
        } else if (member->isBool()) {
            value = member->toBool();
        } else {
            value = member->toDouble();
        }
    }
    return std::ssize(dictionary);
}
std::int64_t decodedByUs(const std::string &text) {
    const auto dictionary = JSONEncoder::createObjFromJSONStr(text);
    return dictionary ? std::ssize(*dictionary) : 0;
}

void decode(benchmark::State &state, std::int64_t (*decoder)(const std::string &)) {
    const std::string text = JSONEncoder::createJSONStrFromDict(members(state.range(0)));
    std::int64_t count = 0;
    for ([[maybe_unused]] auto run : state) {
        count = decoder(text);
        benchmark::DoNotOptimize(count);
    }
    if (count != state.range(0)) {
        state.SkipWithError("not every member was read");
    }
}

void encodePeer(benchmark::State &state) { encode(state, byQJsonDocument); }
void encodeRapid(benchmark::State &state) { encode(state, byRapidJson); }
void encodeOurs(benchmark::State &state) { encode(state, JSONEncoder::createJSONStrFromDict); }
void decodePeer(benchmark::State &state) { decode(state, decodedByQJsonDocument); }
void decodeObject(benchmark::State &state) { decode(state, decodedByQJsonObject); }
void decodeRapid(benchmark::State &state) { decode(state, decodedByRapidJson); }
void decodeOurs(benchmark::State &state) { decode(state, decodedByUs); }

BENCHMARK(encodePeer)->Name("JSON encode/peer")->Arg(5)->Arg(10'000)->Arg(100'000);
BENCHMARK(encodeRapid)->Name("JSON encode/RapidJSON")->Arg(5)->Arg(10'000);
BENCHMARK(encodeOurs)->Name("JSON encode/ours")->Arg(5)->Arg(10'000)->Arg(100'000);
BENCHMARK(decodePeer)->Name("JSON decode/peer")->Arg(5)->Arg(10'000)->Arg(100'000);
BENCHMARK(decodeObject)->Name("JSON decode/QJsonObject")->Arg(5)->Arg(10'000);
BENCHMARK(decodeRapid)->Name("JSON decode/RapidJSON")->Arg(5)->Arg(10'000);
BENCHMARK(decodeOurs)->Name("JSON decode/ours")->Arg(5)->Arg(10'000)->Arg(100'000);

} // namespace
