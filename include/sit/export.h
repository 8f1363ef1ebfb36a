/* How the plug-in's names are declared, for C and C++ hosts alike. */
#ifndef SIT_EXPORT_H
#define SIT_EXPORT_H

/* Marks a function or variable that the host may look up by its plain name. */
#define SIT_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define SIT_NOEXCEPT noexcept
#define SIT_BEGIN_C extern "C" {
#define SIT_END_C }
#else
#define SIT_NOEXCEPT
#define SIT_BEGIN_C
#define SIT_END_C
#endif

/* A function type that may be called with any arguments, or with none. */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
#define SIT_ANY_ARGUMENTS ...
#else
#define SIT_ANY_ARGUMENTS
#endif

#endif
