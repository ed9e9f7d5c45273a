#ifndef ZULTAV_INTERVALS_DETAIL_LEVEL_H
#define ZULTAV_INTERVALS_DETAIL_LEVEL_H

// The inline namespace of code that differs with the instructions it is built for: where a program
// is put together from parts built for different processors, none takes the code of another.
#if defined(__AVX512F__) && defined(__AVX512VL__)
#define ZULTAV_LEVEL for_avx512vl
#elif defined(__AVX512F__)
#define ZULTAV_LEVEL for_avx512f
#elif defined(__FMA__) && defined(__AVX2__)
#define ZULTAV_LEVEL for_avx2_fma
#elif defined(__FMA__)
#define ZULTAV_LEVEL for_fma
#else
#define ZULTAV_LEVEL for_any
#endif

// What is computed for both bounds of an interval must be in line: the processor overlaps the one
// with the other, and registers of two numbers do not travel through memory. So must be what has to
// keep its name on every level but calls code of one of them.
#define ZULTAV_HOT [[gnu::always_inline]] inline

#endif
