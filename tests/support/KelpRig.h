#pragma once

#include "support/KelpProcess.h"
#include "support/Person.h"
#include "support/Sandbox.h"
#include "support/ScreenReader.h"

#include <memory>

namespace kelp::test {

/// What tests of the running application have in common: a desktop of their own, a sandbox, Kelp, and someone who uses
/// it.
class KelpRig
{
protected:
    /// The desktop, once for all functions of a test.
    [[nodiscard]] bool startDesktop();
    [[nodiscard]] bool startSandbox(const QJsonObject &seed);
    /// With the sandbox there is, and readable.
    [[nodiscard]] bool startKelp();
    /// As a second start does.
    [[nodiscard]] bool openPanel();
    /// Ends Kelp and the sandbox; tells what there was where the test has failed.
    void endKelp();
    [[nodiscard]] QJsonValue preference(const QString &name) const { return desktop.preferences().value(name); }

    PrivateDesktop desktop;
    std::unique_ptr<ScreenReader> reader;
    std::unique_ptr<Person> person;
    std::unique_ptr<Sandbox> sandbox;
    std::unique_ptr<KelpProcess> kelp;
};

} // namespace kelp::test
