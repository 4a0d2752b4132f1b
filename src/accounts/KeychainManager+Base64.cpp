#include "accounts/KeychainManager.h"
#include "utils/Utf8Text.h"

namespace quillmark {

namespace {

/// Blanks around a piece don't count; behind it neither do line ends and the dash that ends some texts.
QByteArray withoutMargins(const QByteArray &piece) {
    const auto isAmong = [](char character, QByteArrayView characters) { return characters.contains(character); };
    qsizetype begin = 0;
    qsizetype end = piece.size();
    while (begin < end && isAmong(piece[begin], " \t")) {
        ++begin;
    }
    while (end > begin && isAmong(piece[end - 1], " \t\r\n-")) {
        --end;
    }
    return piece.mid(begin, end - begin);
}

/// The bytes of whole groups of four characters; none when a character is wrong. Only at the very end does "=" shorten
/// the result, elsewhere it stands for six zero bits.
QByteArray decoded(const QByteArray &piece) {
    const qsizetype padding = piece.endsWith("==") ? 2 : piece.endsWith('=') ? 1 : 0;
    const QByteArray characters = withoutMargins(piece).replace('=', 'A');
    const auto result = QByteArray::fromBase64Encoding(characters, QByteArray::AbortOnBase64DecodingErrors);
    return result && characters.size() % 4 == 0 ? result.decoded.chopped(padding) : QByteArray();
}

} // namespace

QString KeychainManager::encryptString(const QString &string) {
    return string.isEmpty() ? string : QString::fromLatin1(string.toUtf8().toBase64());
}

QString KeychainManager::decryptString(const QString &string) {
    if (string.isEmpty()) {
        return string;
    }
    constexpr qsizetype kPiece = 1024;
    const QByteArray text = string.toUtf8();
    QByteArray bytes;
    for (qsizetype at = 0; at < text.size(); at += kPiece) {
        const QByteArray piece = text.mid(at, kPiece);
        const QByteArray decodedPiece = decoded(piece.chopped(piece.size() % 4));
        if (decodedPiece.isEmpty()) {
            break;
        }
        bytes += decodedPiece;
    }
    return utf8Text(bytes);
}

} // namespace quillmark
