// The knowledge engine of the platform as this library provides it: a small, self-contained
// engine that describes objects, their types and their attribute values to the synchro stamp
// computation (KOVASynchroStampServices). Hosts without the platform, the tests and the tools
// describe their objects through ZANKnwBuilder.
//
//   ZANComponentHandles.h   components, ZANBaseUnknown_var, typed handles ZANVar<I>, ZANNullVarError
//   ZANKnwTypes.h           ZANIType, the type dictionary and its standard types
//   ZANTime.h               ZANTime
//   ZANKnwParms.h           parameters, value objects, lists
//   ZANKnwLists.h           1-based value lists ZANListVal<T>
//   ZANKnwParmDictionary.h  the parameter dictionary (time, enumeration, list types)
//   ZANKnwObjects.h         instances, knowledge objects, GetListOfAttributes
//   ZANKnwBuilder.h         making types, values, lists, parameters and objects
#ifndef KOVAMAPPINGSERVICES_ZANKNOWLEDGE_H_
#define KOVAMAPPINGSERVICES_ZANKNOWLEDGE_H_

#include <KOVAMappingServices/ZANComponentHandles.h>
#include <KOVAMappingServices/ZANKnwBuilder.h>
#include <KOVAMappingServices/ZANKnwLists.h>
#include <KOVAMappingServices/ZANKnwObjects.h>
#include <KOVAMappingServices/ZANKnwParmDictionary.h>
#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANKnwTypes.h>
#include <KOVAMappingServices/ZANTime.h>

#endif  // KOVAMAPPINGSERVICES_ZANKNOWLEDGE_H_
