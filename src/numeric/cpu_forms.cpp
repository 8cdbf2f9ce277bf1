#include "numeric/cpu_forms.h"

namespace vistaTrim {

namespace {

CpuForm WidestAvailable()
{
    for (int form = CpuFormCount - 1; form > CpuFormPlain; --form)
        if (CpuFormAvailable(static_cast<CpuForm>(form)))
            return static_cast<CpuForm>(form);
    return CpuFormPlain;
}

CpuForm activeForm = WidestAvailable();

} // namespace

bool CpuFormAvailable(CpuForm form)
{
#if defined(__x86_64__)
    // Static constructors of other files may call this before the runtime has detected the
    // processor.
    __builtin_cpu_init();
    switch (form) {
    case CpuFormPlain: return true;
    case CpuFormSse42: return __builtin_cpu_supports("sse4.2") != 0;
    case CpuFormAvx2: return __builtin_cpu_supports("avx2") != 0;
    case CpuFormAvx512:
        return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
               __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
    default: return false;
    }
#else
    return form == CpuFormPlain;
#endif
}

CpuForm ActiveCpuForm()
{
    return activeForm;
}

void SelectCpuForm(CpuForm form)
{
    activeForm = CpuFormAvailable(form) ? form : CpuFormPlain;
}

} // namespace vistaTrim
