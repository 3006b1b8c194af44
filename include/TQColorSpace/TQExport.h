/* TQColorSpace: how the library's exported names are declared. Building the
 * library exports them (dllexport on Windows, default visibility elsewhere,
 * where everything else is hidden); a host imports them. */
#ifndef TQCOLORSPACE_EXPORT_H
#define TQCOLORSPACE_EXPORT_H

#if defined(_WIN32) && defined(TQCOLORSPACE_BUILDING)
#define TCS_API __declspec(dllexport)
#elif defined(_WIN32)
#define TCS_API __declspec(dllimport)
#elif defined(TQCOLORSPACE_BUILDING)
#define TCS_API __attribute__((visibility("default")))
#else
#define TCS_API
#endif

#endif
