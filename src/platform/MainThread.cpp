#include "platform/MainThread.h"

#include <cstddef>
#include <poll.h>

namespace quillmark {

void serveAlone(std::vector<Input> inputs) {
    while (!inputs.empty()) {
        std::vector<pollfd> waits;
        waits.reserve(inputs.size());
        for (const Input &input : inputs) {
            waits.push_back({input.descriptor, POLLIN, 0});
        }
        ::poll(waits.data(), waits.size(), -1);
        for (size_t place = waits.size(); place-- > 0;) {
            if (waits[place].revents != 0 && !inputs[place].onReadable()) {
                inputs.erase(inputs.begin() + static_cast<std::ptrdiff_t>(place));
            }
        }
    }
}

} // namespace quillmark
