#include <QLoggingCategory>

using namespace Qt::StringLiterals;

/// Called by libFuzzer once, before the first input: what Kelp logs about a million damaged inputs helps nobody.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    QLoggingCategory::setFilterRules(u"kelp.*=false"_s);
    return 0;
}
