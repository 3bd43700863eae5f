#include "sound/SoundBytes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp {

SoundBytes::SoundBytes(const QByteArray &content)
    : m_descriptor(memfd_create("kelp-sound", MFD_CLOEXEC | MFD_ALLOW_SEALING))
{
    if (m_descriptor < 0)
        return;
    const auto size = static_cast<std::size_t>(content.size());
    const bool written = write(m_descriptor, content.constData(), size) == static_cast<ssize_t>(size);
    if (written && fcntl(m_descriptor, F_ADD_SEALS, F_SEAL_WRITE | F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL) == 0)
        return;
    close(m_descriptor);
    m_descriptor = -1;
}

SoundBytes::~SoundBytes()
{
    if (isValid())
        close(m_descriptor);
}

QString SoundBytes::path() const
{
    return u"/proc/self/fd/%1"_s.arg(m_descriptor);
}

} // namespace kelp
