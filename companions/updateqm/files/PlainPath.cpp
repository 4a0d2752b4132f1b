#include "files/PlainPath.h"

#include "process/Failure.h"

#include <algorithm>

namespace updateqm {

PlainPath PlainPath::of(std::string_view path) {
    const auto refuse = [path](const char *why) { return Failure(Status::WrongPlace, std::string(path), why); };
    if (!path.starts_with('/')) {
        throw refuse("is not an absolute path");
    }
    if (path.find('\0') != std::string_view::npos) {
        throw refuse("holds a zero byte");
    }
    for (size_t begin = 1; begin <= path.size();) {
        const size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view component = path.substr(begin, end - begin);
        if (component.empty() || component == "." || component == "..") {
            throw refuse("is not a plain path");
        }
        begin = end + 1;
    }
    const size_t slash = path.rfind('/');
    return {std::string(slash == 0 ? "/" : path.substr(0, slash)), std::string(path.substr(slash + 1))};
}

} // namespace updateqm
