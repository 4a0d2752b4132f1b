/// A flat object between a dictionary and its text: QJsonDocument, RapidJSON, ours.
///
/// The peer does what the launcher would have it do in our place: it begins and ends with a QVariantMap and a QString.
/// As it reads and writes UTF-8, converting the text belongs to its time. The sides "QJsonObject" and "RapidJSON" stop
/// at objects of their own when they decode, which spares them allocations for each member; RapidJSON works on UTF-16
/// as we do.

#include "accounts/JSONEncoder.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace {

using namespace quillmark;

/// What a keychain's item holds, then more of the same kinds.
QVariantMap members(qint64 count) {
    QVariantMap dictionary{{QStringLiteral("encryptionKey"), QStringLiteral("mZ0uX9/Qp3+5kV7c1w==")},
                           {QStringLiteral("keepSignedIn"), true},
                           {QStringLiteral("password"), QStringLiteral("correct \"horse\" battery")},
                           {QStringLiteral("skipAuth"), false},
                           {QStringLiteral("version"), Q_INT64_C(1303)}};
    for (qint64 i = dictionary.size(); i < count; ++i) {
        const QString key = QStringLiteral("member") + QString::number(i);
        switch (i % 4) {
        case 0:
            dictionary.insert(key, i);
            break;
        case 1:
            dictionary.insert(key, i % 8 == 1);
            break;
        case 2:
            dictionary.insert(key, static_cast<double>(i) / 4);
            break;
        default:
            dictionary.insert(key, QStringLiteral("a text, number ") + QString::number(i));
        }
    }
    return dictionary;
}

using Utf16 = rapidjson::UTF16<char16_t>;
using Buffer = rapidjson::GenericStringBuffer<Utf16>;

void writeTo(rapidjson::Writer<Buffer, Utf16, Utf16> &writer, const QVariant &value) {
    switch (value.typeId()) {
    case QMetaType::QString: {
        const QString text = value.toString();
        writer.String(reinterpret_cast<const char16_t *>(text.utf16()), static_cast<rapidjson::SizeType>(text.size()));
        break;
    }
    case QMetaType::Bool:
        writer.Bool(value.toBool());
        break;
    case QMetaType::Double:
        writer.Double(value.toDouble());
        break;
    default:
        writer.Int64(value.toLongLong());
    }
}

QString byRapidJson(const QVariantMap &dictionary) {
    Buffer buffer;
    rapidjson::Writer<Buffer, Utf16, Utf16> writer(buffer);
    writer.StartObject();
    for (auto member = dictionary.begin(); member != dictionary.end(); ++member) {
        writer.Key(reinterpret_cast<const char16_t *>(member.key().utf16()),
                   static_cast<rapidjson::SizeType>(member.key().size()));
        writeTo(writer, member.value());
    }
    writer.EndObject();
    return QString::fromUtf16(buffer.GetString(), static_cast<qsizetype>(buffer.GetSize() / sizeof(char16_t)));
}

QString byQJsonDocument(const QVariantMap &dictionary) {
    return QString::fromUtf8(QJsonDocument(QJsonObject::fromVariantMap(dictionary)).toJson(QJsonDocument::Compact));
}

void encode(benchmark::State &state, QString (*encoder)(const QVariantMap &)) {
    const QVariantMap dictionary = members(state.range(0));
    for ([[maybe_unused]] auto run : state) {
        benchmark::DoNotOptimize(encoder(dictionary).size());
    }
    if (JSONEncoder::createObjFromJSONStr(encoder(dictionary)) != dictionary) {
        state.SkipWithError("the text says something else");
    }
}

qsizetype decodedByRapidJson(const QString &text) {
    rapidjson::GenericDocument<Utf16> document;
    rapidjson::GenericStringStream<Utf16> stream(reinterpret_cast<const char16_t *>(text.utf16()));
    document.ParseStream(stream);
    return static_cast<qsizetype>(document.MemberCount());
}
qsizetype decodedByQJsonObject(const QString &text) { return QJsonDocument::fromJson(text.toUtf8()).object().size(); }
qsizetype decodedByQJsonDocument(const QString &text) {
    return QJsonDocument::fromJson(text.toUtf8()).object().toVariantMap().size();
}
qsizetype decodedByUs(const QString &text) {
    const auto dictionary = JSONEncoder::createObjFromJSONStr(text);
    return dictionary ? dictionary->size() : 0;
}

void decode(benchmark::State &state, qsizetype (*decoder)(const QString &)) {
    const QString text = JSONEncoder::createJSONStrFromDict(members(state.range(0)));
    qsizetype count = 0;
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
