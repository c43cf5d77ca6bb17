/* kova_mapping.h: the C interface of KOVAMappingServices.
 *
 * Mapping tables of references and instances, their JSON mapping documents (versions 6 to 12,
 * plain or in the compressed envelope), synchro stamps and the diagnostic lines, for hosts that
 * cannot call C++: C, and every language with a C foreign-function interface (C#, Java, Delphi,
 * Rust, Python ctypes). The header compiles as C99 and as C++; it uses no C++ type.
 *
 * Library. These functions live in their own shared library, libkovamapping_c.so (SONAME
 * libkovamapping_c.so.1; CMake target KOVAMappingServices::kovamapping_c; pkg-config
 * kovamapping_c), which calls the C++ library libKOVAMappingServices.so. They are kept apart so
 * that C hosts are insulated from the C++ ABI: the C++ library's SONAME changes whenever the
 * layout of its exported classes changes, which C++ hosts must rebuild for, while this library's
 * SONAME changes only when a function below changes or disappears. A C host built once keeps
 * running across C++ releases; only libkovamapping_c.so is rebuilt with them. The library exports
 * the kova_ functions and nothing else.
 *
 * Conventions (the same for every function):
 *  - Status. A function that can fail returns an int32_t status: KOVA_S_OK (0) or another
 *    non-negative value on success, a negative value on failure. The values are those of the C++
 *    library (S_OK, E_FAIL and the statuses of the platform services passed through unchanged),
 *    plus KOVA_E_INVALIDARG, KOVA_E_OUTOFMEMORY, KOVA_E_BOUNDS and KOVA_E_UNEXPECTED below.
 *    After every function that returns a status, kova_last_messages() tells why it failed.
 *    Outputs go through pointer arguments and are written only on success, unless a function says
 *    otherwise.
 *  - Getters return their value directly and never fail; on a NULL handle they return the value
 *    their comment names (kova_table_version and kova_object_kss_version: KOVA_E_INVALIDARG).
 *    They do not change kova_last_messages().
 *  - Text in. Every text argument is UTF-8 given as a pointer and a length in bytes; the length
 *    KOVA_NUL_TERMINATED reads up to the first NUL instead. Exactly `length` bytes are read, and
 *    the caller guarantees they are readable; they may hold NUL bytes. Bytes that are not valid
 *    UTF-8 are replaced by U+FFFD, as the C++ library does. A NULL pointer is accepted with a
 *    length of 0 (the empty text) and refused with KOVA_E_INVALIDARG otherwise.
 *  - Text out. A text that a function hands over (char** out) is UTF-8, NUL-terminated, with its
 *    length in bytes (without the NUL) stored in the size_t* beside it when that pointer is not
 *    NULL. The caller owns it and frees it with kova_free. A text that a getter returns
 *    (const char*) stays owned by the library: see each getter for how long it stays valid.
 *  - Ownership rule, the one used everywhere: every kova_table, kova_object, kova_iterator and
 *    kova_attributes pointer that a function returns or stores in an out argument is a new
 *    reference owned by the caller, who gives it back exactly once with the matching function
 *    (kova_table_free, kova_object_release, kova_iterator_free, kova_attributes_free). Passing a
 *    pointer to a function never takes the caller's reference away. All give-back functions accept
 *    NULL.
 *  - Objects. A kova_object is a reference-counted handle on a reference or an instance. Like the
 *    C++ handles, several handles (and the tables and references that hold the object) share one
 *    object: a change made through one is seen through all. A handle stays valid after the table
 *    it came from is freed, until it is released.
 *  - Threads. Tables and objects are used by one thread at a time. A handle counts as a use of its
 *    object: releasing the last handle of an object reads the object's place in its table, so it
 *    is done on the thread that uses that table, or when no thread uses it. The counts of shared
 *    handles are atomic. kova_last_messages() and the log callback are per thread. The library
 *    starts no thread; the stamp computation's type dictionary, made once, is guarded by a lock.
 *  - Errors. No function crashes on a NULL argument or lets a C++ exception out: memory
 *    exhaustion gives KOVA_E_OUTOFMEMORY, an envelope whose size field is beyond 2147483647 gives
 *    KOVA_E_BOUNDS, any other error raised inside gives KOVA_E_UNEXPECTED; kova_last_messages()
 *    then holds the error's text.
 */
#ifndef KOVAMAPPINGSERVICES_KOVA_MAPPING_H_
#define KOVAMAPPINGSERVICES_KOVA_MAPPING_H_

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(KOVA_BUILDING_C_LIBRARY)
#define KOVA_C_API __declspec(dllexport)
#else
#define KOVA_C_API __declspec(dllimport)
#endif
#else
#define KOVA_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Statuses -------------------------------------------------------------------------------- */

#define KOVA_S_OK ((int32_t)0)
/* Success with nothing to give: the end of an iteration. */
#define KOVA_S_FALSE ((int32_t)1)
/* 0x80004005, the library's failure (E_FAIL). */
#define KOVA_E_FAIL ((int32_t)-2147467259)
/* 0x80070057: a NULL or invalid argument; nothing was done. */
#define KOVA_E_INVALIDARG ((int32_t)-2147024809)
/* 0x8007000E: memory was exhausted; nothing is handed out. */
#define KOVA_E_OUTOFMEMORY ((int32_t)-2147024882)
/* 0x8000000B: a number out of range, the size field of an envelope beyond 2147483647 (also when
 * such a run stands in a plain document's values, where the reader looks for envelopes). */
#define KOVA_E_BOUNDS ((int32_t)-2147483637)
/* 0x8000FFFF: any other error raised inside the library (for example the platform's null-handle
 * error, or an envelope size field with no digits where it is read: a one-digit version with a
 * one-digit size, "V9:1:"); kova_last_messages() holds its text. */
#define KOVA_E_UNEXPECTED ((int32_t)-2147418113)
/* Statuses of the decompression service, passed through by kova_table_read and
 * kova_envelope_unpack: 0x8FFE0008, 0x8FFE007A, 0x8FFE000D. */
#define KOVA_ZANZ_E_OUTOFMEMORY ((int32_t)-1879179256)
#define KOVA_ZANZ_E_INSUFFICIENTBUFFER ((int32_t)-1879179142)
#define KOVA_ZANZ_E_BADDATA ((int32_t)-1879179251)

/* A text length meaning "up to the first NUL". */
#define KOVA_NUL_TERMINATED ((size_t)-1)

/* ---- Handles --------------------------------------------------------------------------------- */

typedef struct kova_table kova_table;
typedef struct kova_object kova_object; /* a reference or an instance */
typedef struct kova_iterator kova_iterator;
typedef struct kova_attributes kova_attributes;

/* The kinds of objects (kova_object_kind). */
#define KOVA_REFERENCE 1
#define KOVA_INSTANCE 2

/* ---- Library --------------------------------------------------------------------------------- */

/* The library's version, "MAJOR.MINOR.PATCH"; static text. */
KOVA_C_API const char* kova_version(void);

/* Frees what the library handed out (texts); NULL is allowed. */
KOVA_C_API void kova_free(void* memory);

/* The diagnostic messages of the last call made on this thread that returned a negative status,
 * one per line, each line ending in "\n": the reader's and the envelope's failure messages, one
 * "UNVALUATED MANDATORY FIELD <key>" per missing mandatory key, or the text of a refused argument
 * or of an error raised inside. A failure the library gives no line for gets one line naming the
 * function, what failed and the status in hexadecimal, e.g.
 * "kova_table_root: the table has no root reference (0x80004005)". A refused argument gives
 * "<function>: <argument> ...", e.g. "kova_table_read: table is NULL". The empty text when the
 * last call that returns a status succeeded. Never NULL; valid until the next call on this
 * thread. Needs no environment variable. */
KOVA_C_API const char* kova_last_messages(void);

/* ---- Tables ---------------------------------------------------------------------------------- */

/* A new, empty table at the current document version. NULL only when memory is exhausted. */
KOVA_C_API kova_table* kova_table_new(void);
/* Frees the table; the objects it held live on while handles to them exist. NULL is allowed. */
KOVA_C_API void kova_table_free(kova_table* table);
/* Makes the table as kova_table_new makes it: no references, the current document version. */
KOVA_C_API int32_t kova_table_clear(kova_table* table);

/* Reads a mapping document (plain JSON or the compressed envelope, versions 6 to 12) into the
 * table, adding to what it holds. The status is the reader's. On failure the table keeps what was
 * read before the failing reference (and the document's version when it was read); clear it for
 * all or nothing. kova_last_messages() gives the reasons. */
KOVA_C_API int32_t kova_table_read(kova_table* table, const char* text, size_t length);
/* Writes the table as a document of the current version. compress: 0 plain JSON, 1 the compressed
 * envelope (plain JSON when compression fails), -1 as the library's compression switch
 * ("IPLX_ACTIVATE_MAPPING_COMPRESSION") says. *text is freed with kova_free. */
KOVA_C_API int32_t kova_table_write(kova_table* table, int compress, char** text, size_t* length);

/* Counts; 0 for NULL. kova_table_instance_count counts the instances of all references. */
KOVA_C_API size_t kova_table_reference_count(const kova_table* table);
KOVA_C_API size_t kova_table_instance_count(const kova_table* table);
/* The document version recorded on the table (the current version for a new table, the version
 * read by kova_table_read even when it was refused); KOVA_E_INVALIDARG for NULL. */
KOVA_C_API int32_t kova_table_version(const kova_table* table);

/* Adds a reference (and the instances it holds) under the identity and root rules; KOVA_E_FAIL
 * when the table already has the same reference (equal kOVA ids, or else equal Plexo ids). */
KOVA_C_API int32_t kova_table_add_reference(kova_table* table, kova_object* reference);
/* Removes the table's reference that is the same as the given one; KOVA_E_FAIL when none. */
KOVA_C_API int32_t kova_table_remove_reference(kova_table* table, kova_object* reference);
/* Adds an instance to the table's reference that is the same as the given one. */
KOVA_C_API int32_t kova_table_add_instance(kova_table* table, kova_object* instance, kova_object* reference);
/* Removes an instance from the table's reference that is the same as the given one. */
KOVA_C_API int32_t kova_table_remove_instance(kova_table* table, kova_object* instance, kova_object* reference);

/* Look-ups. KOVA_S_OK and a new handle in *out when found; KOVA_E_FAIL and *out untouched when
 * not, as the C++ look-ups. */
KOVA_C_API int32_t kova_table_find_reference_by_kova_id(kova_table* table, const char* id, size_t length,
                                                        kova_object** out);
KOVA_C_API int32_t kova_table_find_reference_by_plexo_id(kova_table* table, const char* id, size_t length,
                                                         kova_object** out);
KOVA_C_API int32_t kova_table_find_instance_by_kova_id(kova_table* table, const char* id, size_t length,
                                                       kova_object** out);
KOVA_C_API int32_t kova_table_find_instance_by_plexo_id(kova_table* table, const char* id, size_t length,
                                                        kova_object** out);
/* The root reference; KOVA_E_FAIL when the table has none. */
KOVA_C_API int32_t kova_table_root(kova_table* table, kova_object** out);
/* 1 when the table has a root reference, 0 when not or for NULL. */
KOVA_C_API int kova_table_has_root(kova_table* table);

/* Iterations. Each takes a snapshot of the list when it is made: changes made while iterating
 * do not move it (the objects themselves are shared, so their field changes are seen). */
/* The table's references, in table order. */
KOVA_C_API int32_t kova_table_references(const kova_table* table, kova_iterator** out);
/* All instances, reference by reference, each reference's instances in order. */
KOVA_C_API int32_t kova_table_instances(const kova_table* table, kova_iterator** out);
/* The document order: each reference followed by its instances. */
KOVA_C_API int32_t kova_table_content(const kova_table* table, kova_iterator** out);
/* A reference's instances, in order; KOVA_E_INVALIDARG for an instance. */
KOVA_C_API int32_t kova_reference_instances(const kova_object* reference, kova_iterator** out);

/* The next object of the iteration: KOVA_S_OK and a new handle in *out, or KOVA_S_FALSE and
 * *out = NULL once every object was given. */
KOVA_C_API int32_t kova_iterator_next(kova_iterator* iterator, kova_object** out);
/* The number of objects of the snapshot; 0 for NULL. */
KOVA_C_API size_t kova_iterator_count(const kova_iterator* iterator);
KOVA_C_API void kova_iterator_free(kova_iterator* iterator);

/* ---- Objects --------------------------------------------------------------------------------- */

/* A new reference or instance with empty texts, not local, KSS version 3. NULL only when memory
 * is exhausted. */
KOVA_C_API kova_object* kova_reference_new(void);
KOVA_C_API kova_object* kova_instance_new(void);
/* Adds a reference to the handle's count and returns the handle (NULL for NULL). */
KOVA_C_API kova_object* kova_object_retain(kova_object* object);
/* Gives back one reference; the object is gone when no handle, table or reference holds it. */
KOVA_C_API void kova_object_release(kova_object* object);
/* KOVA_REFERENCE or KOVA_INSTANCE; 0 for NULL. */
KOVA_C_API int kova_object_kind(const kova_object* object);

/* Text fields. The text stays valid until the same getter is called again on the same handle or
 * the handle is released; NULL (and *length = 0) for a NULL handle. length may be NULL. Should
 * memory run out while a long text (over 46 bytes) is copied, the answer is "" with length 0. */
KOVA_C_API const char* kova_object_kova_id(const kova_object* object, size_t* length);
KOVA_C_API const char* kova_object_plexo_id(const kova_object* object, size_t* length);
KOVA_C_API const char* kova_object_custom_data(const kova_object* object, size_t* length);
/* The stored stamp, without version prefix. */
KOVA_C_API const char* kova_object_stamp(const kova_object* object, size_t* length);
/* An instance's RefID; NULL for a reference. */
KOVA_C_API const char* kova_instance_ref_id(const kova_object* object, size_t* length);
/* 1 or 0; 0 for NULL. */
KOVA_C_API int kova_object_is_local(const kova_object* object);
/* The KSS version (3 for a new object); KOVA_E_INVALIDARG for NULL. */
KOVA_C_API int32_t kova_object_kss_version(const kova_object* object);
/* 1 when the KSS version is 0 (stamp derived from a CE stamp); 0 otherwise or for NULL. */
KOVA_C_API int kova_object_stamp_is_from_ce(const kova_object* object);
/* 1 when the KSS version is greater than 1; 0 otherwise or for NULL. */
KOVA_C_API int kova_object_stamp_has_unset(const kova_object* object);

/* Setters. Every table and reference holding the object sees the change at once. */
KOVA_C_API int32_t kova_object_set_kova_id(kova_object* object, const char* text, size_t length);
KOVA_C_API int32_t kova_object_set_plexo_id(kova_object* object, const char* text, size_t length);
KOVA_C_API int32_t kova_object_set_custom_data(kova_object* object, const char* text, size_t length);
/* A versioned text also sets the KSS version and is stored without its prefix: "V<n>:..." sets
 * the first digit n, "V0KSS:..." sets 0. Any other text leaves the KSS version as it was. */
KOVA_C_API int32_t kova_object_set_stamp(kova_object* object, const char* text, size_t length);
/* Stores the number as given. */
KOVA_C_API int32_t kova_object_set_kss_version(kova_object* object, int32_t version);
KOVA_C_API int32_t kova_object_set_is_local(kova_object* object, int is_local);
/* KOVA_E_INVALIDARG for a reference. */
KOVA_C_API int32_t kova_instance_set_ref_id(kova_object* object, const char* text, size_t length);

/* The identity rule: 1 when both objects have equal kOVA ids, or else equal Plexo ids; 0
 * otherwise or when either is NULL. */
KOVA_C_API int kova_object_same(const kova_object* a, const kova_object* b);
/* 1 when both handles share one object (a change through one is seen through the other). */
KOVA_C_API int kova_object_shares(const kova_object* a, const kova_object* b);
/* 1 when the stored stamps are equal; 0 otherwise or when either is NULL. */
KOVA_C_API int kova_object_stamp_equals(const kova_object* a, const kova_object* b);
/* 1 when the stored stamp equals the text exactly (the text is not version-stripped). */
KOVA_C_API int kova_object_stamp_equals_text(const kova_object* object, const char* text, size_t length);

/* A reference's instances. Adding refuses (KOVA_E_FAIL) an instance that is the same as one the
 * reference holds; removing refuses one it does not hold. KOVA_E_INVALIDARG when the kinds are
 * wrong. */
KOVA_C_API int32_t kova_reference_add_instance(kova_object* reference, kova_object* instance);
KOVA_C_API int32_t kova_reference_remove_instance(kova_object* reference, kova_object* instance);
/* The number of instances; 0 for NULL or an instance. */
KOVA_C_API size_t kova_reference_instance_count(const kova_object* reference);

/* ---- Stamp texts ----------------------------------------------------------------------------- */

/* "V<version>:" followed by the stamp. */
KOVA_C_API int32_t kova_stamp_with_version(const char* stamp, size_t length, int32_t version, char** out,
                                           size_t* out_length);
/* The stamp without its prefix: without its first three characters when it starts with
 * "V<digits>:" (so "V12:abc" gives ":abc"), without "V0KSS:", else the text as it is. */
KOVA_C_API int32_t kova_stamp_without_version(const char* stamp, size_t length, char** out, size_t* out_length);
/* The version carried by a stamp text: the first digit of a "V<digits>:" prefix (only one digit
 * is read: "V12:abc" gives 1), 0 for "V0KSS:", -1 when there is no prefix or for NULL. */
KOVA_C_API int32_t kova_stamp_version(const char* stamp, size_t length);
/* "V0KSS:" followed by the stamp. */
KOVA_C_API int32_t kova_stamp_add_ce_prefix(const char* stamp, size_t length, char** out, size_t* out_length);
/* 1 when the text starts with "V0KSS:"; 0 otherwise or for NULL. */
KOVA_C_API int kova_stamp_has_ce_prefix(const char* stamp, size_t length);
/* The synchro stamp derived from a CE stamp ("CESv1(x'...')"), with its "V0KSS:" prefix. */
KOVA_C_API int32_t kova_stamp_from_ce(const char* ce_stamp, size_t length, char** out, size_t* out_length);

/* ---- Stamp computation ----------------------------------------------------------------------- */

/* Kinds of attribute values, for kova_attributes_set_unset and the lists. */
#define KOVA_VALUE_STRING 1
#define KOVA_VALUE_INTEGER 2
#define KOVA_VALUE_REAL 3
#define KOVA_VALUE_BOOLEAN 4
#define KOVA_VALUE_TIME 5

/* A set of named attribute values, each name at most once (setting a name again replaces its
 * value). NULL only when memory is exhausted. */
KOVA_C_API kova_attributes* kova_attributes_new(void);
KOVA_C_API void kova_attributes_free(kova_attributes* attributes);
/* The number of attributes; 0 for NULL. */
KOVA_C_API size_t kova_attributes_count(const kova_attributes* attributes);
KOVA_C_API int32_t kova_attributes_set_string(kova_attributes* attributes, const char* name, size_t name_length,
                                              const char* value, size_t value_length);
KOVA_C_API int32_t kova_attributes_set_integer(kova_attributes* attributes, const char* name, size_t name_length,
                                               int32_t value);
KOVA_C_API int32_t kova_attributes_set_real(kova_attributes* attributes, const char* name, size_t name_length,
                                            double value);
KOVA_C_API int32_t kova_attributes_set_boolean(kova_attributes* attributes, const char* name, size_t name_length,
                                               int value);
/* A time, in whole seconds since 1970-01-01 00:00 UTC. */
KOVA_C_API int32_t kova_attributes_set_time(kova_attributes* attributes, const char* name, size_t name_length,
                                            int64_t seconds);
/* An attribute that is not set, of the given kind (KOVA_VALUE_...). */
KOVA_C_API int32_t kova_attributes_set_unset(kova_attributes* attributes, const char* name, size_t name_length,
                                             int kind);
/* Lists of one kind; count may be 0. For strings, lengths may be NULL (every value then
 * NUL-terminated). */
KOVA_C_API int32_t kova_attributes_set_string_list(kova_attributes* attributes, const char* name, size_t name_length,
                                                   const char* const* values, const size_t* lengths, size_t count);
KOVA_C_API int32_t kova_attributes_set_integer_list(kova_attributes* attributes, const char* name, size_t name_length,
                                                    const int32_t* values, size_t count);
KOVA_C_API int32_t kova_attributes_set_real_list(kova_attributes* attributes, const char* name, size_t name_length,
                                                 const double* values, size_t count);
KOVA_C_API int32_t kova_attributes_set_boolean_list(kova_attributes* attributes, const char* name, size_t name_length,
                                                    const int* values, size_t count);
KOVA_C_API int32_t kova_attributes_set_time_list(kova_attributes* attributes, const char* name, size_t name_length,
                                                 const int64_t* values, size_t count);

/* The synchro stamp of the attributes (a bare stamp: base64 of the digest of their canonical
 * text), as KOVASynchroStampServices::ComputeKOVASynchroStamp computes it from a map. KOVA_E_FAIL
 * unless "DONOTUSE_ENABLEKSSGEN" was set when the library was loaded. */
KOVA_C_API int32_t kova_stamp_compute(const kova_attributes* attributes, char** stamp, size_t* length);

/* ---- Compressed envelope --------------------------------------------------------------------- */

/* "V<current version>:<size>:" followed by the base64 of the zlib-compressed text. */
KOVA_C_API int32_t kova_envelope_pack(const char* text, size_t length, char** out, size_t* out_length);
/* The text held by an envelope. KOVA_E_FAIL for a text that is not one (no "V<n>:<size>:"), the
 * decoder's or decompression's status for one that does not open. */
KOVA_C_API int32_t kova_envelope_unpack(const char* text, size_t length, char** out, size_t* out_length);

/* ---- Diagnostic lines ------------------------------------------------------------------------ */

/* 1 when the library emits its diagnostic lines on this thread: "ActivateKOVALogger" was set at
 * the first use, or a log callback is installed on this thread. */
KOVA_C_API int kova_log_is_active(void);

/* Receives one diagnostic line: its context ("" when it has none) and its message, NUL-terminated
 * UTF-8 valid during the call only; user is the pointer given with the callback. */
typedef void (*kova_log_callback)(const char* context, const char* message, void* user);

/* Which lines a callback wants (kova_log_set_callback). */
#define KOVA_LOG_REASONS 0    /* the failure reasons (see kova_last_messages) */
#define KOVA_LOG_EVERYTHING 1 /* every line, the documents and table dumps included */

/* Installs the callback for the calls made on this thread (replacing the one installed before);
 * NULL removes it. While one is installed the library emits its lines on this thread as with the
 * environment switch, and passes those wanted to the callback, synchronously. The callback may
 * call the library again: the lines of such a nested call reach kova_last_messages() but are not
 * passed to the running callback again. Called from inside a callback, it changes nothing and
 * returns KOVA_E_FAIL. Other threads are not affected. A callback still installed when its
 * thread ends is removed then. */
KOVA_C_API int32_t kova_log_set_callback(kova_log_callback callback, void* user, int wants);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* KOVAMAPPINGSERVICES_KOVA_MAPPING_H_ */
