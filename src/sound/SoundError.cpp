#include "sound/SoundError.h"

using namespace Qt::StringLiterals;

namespace kelp {

QString SoundError::description() const
{
    switch (kind) {
    case Kind::corruptFile:
        return u"The file couldn’t be opened because it isn’t in the correct format."_s;
    case Kind::folder:
        return u"The folder for Kelp’s files couldn’t be created."_s;
    case Kind::copy:
        return u"The file couldn’t be copied."_s;
    }
    Q_UNREACHABLE();
}

} // namespace kelp
