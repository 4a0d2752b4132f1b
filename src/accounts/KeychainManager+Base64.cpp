#include "accounts/KeychainManager.h"
#include "platform/values/Base64.h"
#include "platform/values/Utf8Text.h"

#include <algorithm>

namespace quillmark {

namespace {

/// Blanks around a piece don't count; behind it neither do line ends and the dash that ends some texts.
std::string_view withoutMargins(std::string_view piece) {
    piece.remove_prefix(std::min(piece.find_first_not_of(" \t"), piece.size()));
    return piece.substr(0, piece.find_last_not_of(" \t\r\n-") + 1);
}

/// The bytes of whole groups of four characters; none when a character is wrong. Only at the very end does "=" shorten
/// the result, elsewhere it stands for six zero bits.
std::string decoded(std::string_view piece) {
    const size_t padding = piece.ends_with("==") ? 2 : piece.ends_with('=') ? 1 : 0;
    std::string characters(withoutMargins(piece));
    std::replace(characters.begin(), characters.end(), '=', 'A');
    const auto bytes = characters.size() % 4 == 0 ? bytesOfBase64(characters) : std::nullopt;
    return bytes ? bytes->substr(0, bytes->size() - std::min(padding, bytes->size())) : std::string();
}

} // namespace

std::optional<std::string> KeychainManager::encryptString(OptionalText string) {
    return string ? std::optional(base64(*string)) : std::nullopt;
}

std::optional<std::string> KeychainManager::decryptString(OptionalText string) {
    if (!string) {
        return std::nullopt;
    }
    constexpr size_t kPiece = 1024;
    std::string bytes;
    for (size_t at = 0; at < string->size(); at += kPiece) {
        const std::string_view piece = string->substr(at, kPiece);
        const std::string decodedPiece = decoded(piece.substr(0, piece.size() - piece.size() % 4));
        if (decodedPiece.empty()) {
            break;
        }
        bytes += decodedPiece;
    }
    return utf8Text(std::move(bytes));
}

} // namespace quillmark
