#include "platform/linux/bus/Gio.h"
#include "platform/linux/bus/TimeLimit.h"
#include "platform/linux/desktop/SessionBus.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

namespace quillmark {

namespace {

/// A method of an object on the bus.
struct Method {
    const char *busName;
    const char *objectPath;
    const char *interface;
    const char *name;
};

/// What came of a call: a value, or a problem.
struct Reply {
    Value value;
    Problem problem;
};

/// One dialogue on the bus, over a connection of its own, within a time limit for the whole of it.
class Dialogue {
public:
    explicit Dialogue(const std::string &address)
        : m_connection(g_dbus_connection_new_for_address_sync(
              address.c_str(),
              static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
              nullptr, m_limit.cancellable(), nullptr)) {}

    bool isOpen() const { return m_connection != nullptr; }

    /// \param arguments a new tuple, or null for none. \param replyType a tuple's type.
    Reply call(const Method &method, GVariant *arguments, const char *replyType) {
        constexpr int kCallLimit = 1000; // milliseconds
        GError *error = nullptr;
        GVariant *const value = g_dbus_connection_call_sync(
            m_connection.get(), method.busName, method.objectPath, method.interface, method.name, arguments,
            G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NO_AUTO_START, kCallLimit, m_limit.cancellable(), &error);
        return {Value(value), Problem(error)};
    }

private:
    TimeLimit m_limit;
    Connection m_connection;
};

/// The object that an application shows on the bus: its name as a path, as the Desktop Entry Specification has it.
std::string objectPathOf(const std::string &busName) {
    std::string path = '/' + busName;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

std::vector<std::string> namesIn(GVariant *tupleOfNames) {
    GVariantIter *names = nullptr;
    const char *name = nullptr;
    std::vector<std::string> list;
    g_variant_get(tupleOfNames, "(as)", &names);
    while (g_variant_iter_next(names, "&s", &name) != FALSE) {
        list.emplace_back(name);
    }
    g_variant_iter_free(names);
    return list;
}

/// A method of the bus itself.
Method busMethod(const char *name) {
    return {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", name};
}

/// The connection that owns a name; nothing when none does.
std::optional<std::string> ownerOf(const std::string &busName, Dialogue &dialogue) {
    const Reply reply = dialogue.call(busMethod("GetNameOwner"), g_variant_new("(s)", busName.c_str()), "(s)");
    if (reply.value == nullptr) {
        return std::nullopt;
    }
    const char *owner = nullptr;
    g_variant_get(reply.value.get(), "(&s)", &owner);
    return owner;
}

/// The application has the request although it has not answered: it is busy, or it has quit at once.
bool isWithoutAnswer(const GError *problem) {
    return g_error_matches(problem, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) ||
           g_error_matches(problem, G_IO_ERROR, G_IO_ERROR_CANCELLED) ||
           g_error_matches(problem, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY);
}

class GioSessionBus final : public SessionBus {
public:
    explicit GioSessionBus(std::string address) : m_address(std::move(address)) {}

    std::optional<int> processOwning(const std::string &busName) override {
        Dialogue dialogue(m_address);
        if (!dialogue.isOpen()) {
            return std::nullopt;
        }
        const Reply reply =
            dialogue.call(busMethod("GetConnectionUnixProcessID"), g_variant_new("(s)", busName.c_str()), "(u)");
        if (reply.value == nullptr) {
            return std::nullopt;
        }
        guint32 process = 0;
        g_variant_get(reply.value.get(), "(u)", &process);
        return static_cast<int>(process);
    }

    bool activateQuit(const std::string &bundleIdentifier) override {
        Dialogue dialogue(m_address);
        return dialogue.isOpen() && isApplicationName(bundleIdentifier) &&
               offersQuit(bundleIdentifier, dialogue).value_or(true) && activateQuitOf(bundleIdentifier, dialogue);
    }

    bool activateQuitOfOwner(const std::string &busName) override {
        Dialogue dialogue(m_address);
        const auto owner = dialogue.isOpen() ? ownerOf(busName, dialogue) : std::nullopt;
        if (!owner) {
            return false;
        }
        const Reply names = dialogue.call(busMethod("ListNames"), nullptr, "(as)");
        const std::vector<std::string> all =
            names.value != nullptr ? namesIn(names.value.get()) : std::vector<std::string>();
        return std::any_of(all.begin(), all.end(), [&](const std::string &name) {
            return isApplicationName(name) && ownerOf(name, dialogue) == owner &&
                   offersQuit(name, dialogue).value_or(false) && activateQuitOf(name, dialogue);
        });
    }

private:
    static constexpr const char *kQuit = "quit";

    static bool isApplicationName(const std::string &name) {
        return !name.starts_with(':') && g_dbus_is_name(name.c_str()) != FALSE &&
               g_variant_is_object_path(objectPathOf(name).c_str()) != FALSE;
    }

    /// Applications take the activation of an action that they don't have without a word, so they are asked first.
    /// \returns nothing when the application does not say.
    static std::optional<bool> offersQuit(const std::string &name, Dialogue &dialogue) {
        const Reply actions =
            dialogue.call({name.c_str(), objectPathOf(name).c_str(), "org.gtk.Actions", "List"}, nullptr, "(as)");
        if (actions.value == nullptr) {
            return std::nullopt;
        }
        const std::vector<std::string> names = namesIn(actions.value.get());
        return std::find(names.begin(), names.end(), kQuit) != names.end();
    }

    static bool activateQuitOf(const std::string &name, Dialogue &dialogue) {
        const Reply done =
            dialogue.call({name.c_str(), objectPathOf(name).c_str(), "org.freedesktop.Application", "ActivateAction"},
                          g_variant_new("(sava{sv})", kQuit, nullptr, nullptr), "()");
        return done.value != nullptr || isWithoutAnswer(done.problem.get());
    }

    std::string m_address;
};

} // namespace

} // namespace quillmark

extern "C" [[gnu::visibility("default")]] quillmark::SessionBus *quillmarkOpenSessionBus(const std::string &address) {
    static auto *const bus = new quillmark::GioSessionBus(address);
    return bus;
}

static_assert(std::is_same_v<decltype(quillmarkOpenSessionBus), quillmark::QuillmarkOpenSessionBus>);
