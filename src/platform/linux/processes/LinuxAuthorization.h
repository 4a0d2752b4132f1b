#pragma once

#include "platform/Authorization.h"

namespace quillmark {

class Bundle;

/// Administrator rights by way of the desktop's password dialog (polkit), which is asked once for a reference: it lets
/// a small helper of the bundle run as root for as long as the reference lives. A process that is root already is not
/// asked.
class LinuxAuthorization final : public Authorization {
public:
    explicit LinuxAuthorization(const Bundle &bundle) : m_bundle(bundle) {}

    std::int32_t create(std::unique_ptr<Reference> &reference) override;

private:
    const Bundle &m_bundle;
};

} // namespace quillmark
