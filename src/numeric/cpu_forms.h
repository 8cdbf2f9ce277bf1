// Kernels compiled as several ISA variants.
//
// A kernel is one plain loop nest, written once as an always-inlined body; the macro below compiles
// it again for wider registers and picks a variant at run time. All variants give the same bits:
// nothing is contracted, and no loop sums in an order that depends on the register width.
#ifndef VISTATRIM_NUMERIC_CPU_FORMS_H
#define VISTATRIM_NUMERIC_CPU_FORMS_H

namespace vistaTrim {

enum CpuForm {
    CpuFormPlain = 0, // whatever the build was made for
    CpuFormSse42 = 1, // x86-64-v2
    CpuFormAvx2 = 2,
    CpuFormAvx512 = 3,
    CpuFormCount = 4
};

// True if this machine and this build can run the variant. Plain is always available.
bool CpuFormAvailable(CpuForm form);
// The variant in use: the widest available, unless SelectCpuForm chose another.
CpuForm ActiveCpuForm();
// For tests and benchmarks: every kernel uses this variant from now on. Not thread-safe.
void SelectCpuForm(CpuForm form);

} // namespace vistaTrim

#define VISTATRIM_FORM_BODY static inline __attribute__((always_inline))

// Goes before a loop whose iterations are independent: arrays are identical or disjoint, never
// partly overlapping. Without it an in-place call may run the scalar tail.
#if defined(__clang__)
#define VISTATRIM_INDEPENDENT_STEPS _Pragma("clang loop vectorize(assume_safety)")
#else
#define VISTATRIM_INDEPENDENT_STEPS _Pragma("GCC ivdep")
#endif

// VISTATRIM_FORMS(Name, (parameters), (arguments)) defines `static void Name parameters`, which
// runs NameBody in the active variant. NameBody is a VISTATRIM_FORM_BODY that returns nothing.
#if defined(__x86_64__)
#define VISTATRIM_FORMS(Name, Parameters, Arguments)                                               \
    static void Name##Plain Parameters                                                             \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    __attribute__((target("sse4.2"))) static void Name##Sse42 Parameters                           \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    __attribute__((target("avx2"))) static void Name##Avx2 Parameters                              \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    __attribute__((                                                                                \
        target("avx512f,avx512bw,avx512dq,avx512vl"))) static void Name##Avx512 Parameters         \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }                                                                                              \
    static void Name Parameters                                                                    \
    {                                                                                              \
        switch (ActiveCpuForm()) {                                                                 \
        case CpuFormAvx512: Name##Avx512 Arguments; return;                                        \
        case CpuFormAvx2: Name##Avx2 Arguments; return;                                            \
        case CpuFormSse42: Name##Sse42 Arguments; return;                                          \
        default: Name##Plain Arguments; return;                                                    \
        }                                                                                          \
    }
#else
#define VISTATRIM_FORMS(Name, Parameters, Arguments)                                               \
    static void Name Parameters                                                                    \
    {                                                                                              \
        Name##Body Arguments;                                                                      \
    }
#endif

#endif
