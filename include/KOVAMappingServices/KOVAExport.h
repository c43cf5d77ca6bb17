// The one export macro of the library. Symbols are hidden by default; everything a host may call
// carries KOVA_EXPORT.
#ifndef KOVAMAPPINGSERVICES_KOVAEXPORT_H_
#define KOVAMAPPINGSERVICES_KOVAEXPORT_H_

#if defined(_WIN32)
#if defined(KOVA_BUILDING_LIBRARY)
#define KOVA_EXPORT __declspec(dllexport)
#else
#define KOVA_EXPORT __declspec(dllimport)
#endif
#else
#define KOVA_EXPORT __attribute__((visibility("default")))
#endif

#endif  // KOVAMAPPINGSERVICES_KOVAEXPORT_H_
