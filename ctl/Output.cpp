#include "Command.h"
#include "Json.h"

#include <cerrno>
#include <system_error>

namespace quillmark::ctl {

void Output::text(std::string_view text) const {
    if (std::fwrite(text.data(), 1, text.size(), m_stream) != text.size() || std::fflush(m_stream) != 0) {
        throw Failure{"standard output", std::generic_category().message(errno)};
    }
}

void Output::line(std::string_view text) const { this->text(std::string(text) + '\n'); }
void Output::json(const Value &value) const { line(printedJson(value, m_isPretty)); }

List listOf(const std::vector<std::string> &texts) { return {texts.begin(), texts.end()}; }

} // namespace quillmark::ctl
