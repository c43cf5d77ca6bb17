/* check.h: checks and the test runner of the C interface tests.
 *
 * Each program holds the test cases of one area. A test case is a function declared with
 * TEST(name) at the start of a line (tests/capi.cmake reads those lines to register one ctest entry
 * per case) and listed in the program's table with TEST_CASE(name). The program runs the cases
 * named on its command line, all of them without arguments, and lists them with --list.
 *
 * A failed check prints file:line, the expression and what was found, and ends the process with
 * status 1. Everything here is C11. */
#ifndef KOVA_TESTS_CAPI_CHECK_H_
#define KOVA_TESTS_CAPI_CHECK_H_

#include <KOVAMappingServices/kova_mapping.h>

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- Reporting ------------------------------------------------------------------------------- */

/* Prints bytes as a C string literal would show them: printable ASCII as it is, the rest escaped. */
static inline void kova_check_print_bytes(const char* bytes, size_t length) {
  fputc('"', stderr);
  if (bytes == NULL) {
    fputs("(null)", stderr);
  } else {
    for (size_t i = 0; i < length; ++i) {
      const unsigned char c = (unsigned char)bytes[i];
      if (c == '\n') {
        fputs("\\n", stderr);
      } else if (c == '"' || c == '\\') {
        fprintf(stderr, "\\%c", c);
      } else if (c >= 0x20 && c < 0x7F) {
        fputc(c, stderr);
      } else {
        fprintf(stderr, "\\x%02X", c);
      }
    }
  }
  fputc('"', stderr);
}

static inline void kova_check_fail_at(const char* file, int line, const char* what) {
  fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what);
}

static inline void kova_check_print_messages(void) {
  const char* messages = kova_last_messages();
  fputs("  kova_last_messages(): ", stderr);
  kova_check_print_bytes(messages, messages != NULL ? strlen(messages) : 0);
  fputc('\n', stderr);
}

/* A condition. */
#define CHECK(expr)                                  \
  do {                                               \
    if (!(expr)) {                                   \
      kova_check_fail_at(__FILE__, __LINE__, #expr); \
      exit(1);                                       \
    }                                                \
  } while (0)

/* Two integers (compared as long long). */
#define CHECK_INT(expected, actual)                                     \
  do {                                                                  \
    const long long kova_e_ = (long long)(expected);                    \
    const long long kova_a_ = (long long)(actual);                      \
    if (kova_e_ != kova_a_) {                                           \
      kova_check_fail_at(__FILE__, __LINE__, #actual " == " #expected); \
      fprintf(stderr, "  expected %lld, got %lld\n", kova_e_, kova_a_); \
      exit(1);                                                          \
    }                                                                   \
  } while (0)

/* The status returned by a call. On a mismatch, kova_last_messages() is printed too. */
#define CHECK_STATUS(expected, call)                                                              \
  do {                                                                                            \
    const int32_t kova_e_ = (int32_t)(expected);                                                  \
    const int32_t kova_a_ = (int32_t)(call);                                                      \
    if (kova_e_ != kova_a_) {                                                                     \
      kova_check_fail_at(__FILE__, __LINE__, #call " returns " #expected);                        \
      fprintf(stderr, "  expected status %ld (0x%08lX), got %ld (0x%08lX)\n", (long)kova_e_,      \
              (unsigned long)(uint32_t)kova_e_, (long)kova_a_, (unsigned long)(uint32_t)kova_a_); \
      kova_check_print_messages();                                                                \
      exit(1);                                                                                    \
    }                                                                                             \
  } while (0)

/* A status that is a failure (negative). */
#define CHECK_FAILS(call)                                                        \
  do {                                                                           \
    const int32_t kova_a_ = (int32_t)(call);                                     \
    if (kova_a_ >= 0) {                                                          \
      kova_check_fail_at(__FILE__, __LINE__, #call " fails");                    \
      fprintf(stderr, "  expected a negative status, got %ld\n", (long)kova_a_); \
      exit(1);                                                                   \
    }                                                                            \
  } while (0)

/* Bytes: `actual` (actual_length bytes, NULL fails) equals `expected` (expected_length bytes). */
static inline void kova_check_bytes(const char* file, int line, const char* what, const char* expected,
                                    size_t expected_length, const char* actual, size_t actual_length) {
  if (actual == NULL || expected_length != actual_length ||
      (expected_length > 0 && memcmp(expected, actual, expected_length) != 0)) {
    kova_check_fail_at(file, line, what);
    fputs("  expected ", stderr);
    kova_check_print_bytes(expected, expected_length);
    fprintf(stderr, " (%zu bytes)\n  got      ", expected_length);
    kova_check_print_bytes(actual, actual == NULL ? 0 : actual_length);
    fprintf(stderr, " (%zu bytes)\n", actual == NULL ? (size_t)0 : actual_length);
    exit(1);
  }
}

#define CHECK_MEM(expected, expected_length, actual, actual_length)                                       \
  kova_check_bytes(__FILE__, __LINE__, #actual " == " #expected, (expected), (expected_length), (actual), \
                   (actual_length))

/* Two NUL-terminated texts; a NULL actual fails. */
#define CHECK_STR(expected, actual)                                                                   \
  do {                                                                                                \
    const char* kova_e_ = (expected);                                                                 \
    const char* kova_a_ = (actual);                                                                   \
    kova_check_bytes(__FILE__, __LINE__, #actual " == " #expected, kova_e_, strlen(kova_e_), kova_a_, \
                     kova_a_ != NULL ? strlen(kova_a_) : 0);                                          \
  } while (0)

/* A text handed out with its length: the length agrees with the text, which is NUL-terminated. */
#define CHECK_TEXT(expected, text, length)                      \
  do {                                                          \
    const char* kova_t_ = (text);                               \
    CHECK(kova_t_ != NULL);                                     \
    CHECK_MEM((expected), strlen(expected), kova_t_, (length)); \
    CHECK(kova_t_[(length)] == '\0');                           \
  } while (0)

/* The messages of the last call that returns a status. */
#define CHECK_MESSAGES(expected) CHECK_STR((expected), kova_last_messages())

/* A refused argument: KOVA_E_INVALIDARG, and kova_last_messages() says why, in whole lines. */
#define CHECK_REFUSED(call)                                                               \
  do {                                                                                    \
    CHECK_STATUS(KOVA_E_INVALIDARG, call);                                                \
    const char* kova_m_ = kova_last_messages();                                           \
    if (kova_m_ == NULL || kova_m_[0] == '\0' || kova_m_[strlen(kova_m_) - 1] != '\n') {  \
      kova_check_fail_at(__FILE__, __LINE__, #call ": a message ending in a line break"); \
      kova_check_print_messages();                                                        \
      exit(1);                                                                            \
    }                                                                                     \
  } while (0)

/* ---- Runner ---------------------------------------------------------------------------------- */

typedef struct {
  const char* name;
  void (*run)(void);
} kova_test_case;

#define TEST(name) static void name(void)
#define TEST_CASE(name) \
  { #name, name }

static inline int kova_run_tests(const kova_test_case* cases, size_t count, int argc, char** argv) {
  if (argc == 2 && strcmp(argv[1], "--list") == 0) {
    for (size_t i = 0; i < count; ++i) printf("%s\n", cases[i].name);
    return 0;
  }
  if (argc < 2) {
    for (size_t i = 0; i < count; ++i) {
      cases[i].run();
      printf("ok %s\n", cases[i].name);
    }
    return 0;
  }
  for (int a = 1; a < argc; ++a) {
    size_t i = 0;
    while (i < count && strcmp(cases[i].name, argv[a]) != 0) ++i;
    if (i == count) {
      fprintf(stderr, "no test case named %s\n", argv[a]);
      return 2;
    }
    cases[i].run();
    printf("ok %s\n", cases[i].name);
  }
  return 0;
}

#define RUN_TESTS(cases) \
  int main(int argc, char** argv) { return kova_run_tests((cases), sizeof(cases) / sizeof((cases)[0]), argc, argv); }

/* ---- Test data ------------------------------------------------------------------------------- */

/* The folders of the test documents and of the example documents (set by tests/capi.cmake). */
#ifndef KOVA_TEST_DOCUMENTS
#error "KOVA_TEST_DOCUMENTS must name tests/data/documents"
#endif
#ifndef KOVA_EXAMPLE_DOCUMENTS
#error "KOVA_EXAMPLE_DOCUMENTS must name examples/documents"
#endif

/* A whole file, NUL-terminated, its length without the NUL in *length. Freed with free(). */
static inline char* kova_read_file(const char* folder, const char* name, size_t* length) {
  char path[1024];
  snprintf(path, sizeof path, "%s/%s", folder, name);
  FILE* file = fopen(path, "rb");
  if (file == NULL) {
    fprintf(stderr, "cannot open %s\n", path);
    exit(1);
  }
  size_t capacity = 4096;
  size_t size = 0;
  char* bytes = malloc(capacity);
  CHECK(bytes != NULL);
  for (;;) {
    if (size + 1 >= capacity) {
      capacity *= 2;
      char* grown = realloc(bytes, capacity);
      CHECK(grown != NULL);
      bytes = grown;
    }
    const size_t got = fread(bytes + size, 1, capacity - size - 1, file);
    if (got == 0) break;
    size += got;
  }
  CHECK(!ferror(file));
  fclose(file);
  bytes[size] = '\0';
  if (length != NULL) *length = size;
  return bytes;
}

static inline char* kova_test_document(const char* name, size_t* length) {
  return kova_read_file(KOVA_TEST_DOCUMENTS, name, length);
}

static inline char* kova_example_document(const char* name, size_t* length) {
  return kova_read_file(KOVA_EXAMPLE_DOCUMENTS, name, length);
}

/* A new table holding a document read from a file (test documents when `example` is 0, example
 * documents otherwise), whose reading must give `expected_status`. */
static inline kova_table* kova_table_from_file(const char* file, int line, int example, const char* name,
                                               int32_t expected_status) {
  size_t length = 0;
  char* text = example ? kova_example_document(name, &length) : kova_test_document(name, &length);
  kova_table* table = kova_table_new();
  if (table == NULL) {
    kova_check_fail_at(file, line, "kova_table_new() != NULL");
    exit(1);
  }
  const int32_t status = kova_table_read(table, text, length);
  free(text);
  if (status != expected_status) {
    fprintf(stderr, "%s:%d: reading %s returned %ld (0x%08lX), expected %ld (0x%08lX)\n", file, line, name,
            (long)status, (unsigned long)(uint32_t)status, (long)expected_status,
            (unsigned long)(uint32_t)expected_status);
    kova_check_print_messages();
    exit(1);
  }
  return table;
}

#define READ_TEST_DOCUMENT(name, status) kova_table_from_file(__FILE__, __LINE__, 0, (name), (status))
#define READ_EXAMPLE_DOCUMENT(name, status) kova_table_from_file(__FILE__, __LINE__, 1, (name), (status))

/* ---- Objects and iterations ------------------------------------------------------------------ */

/* An address that no function of the library hands out: put in an out argument, it shows whether
 * the argument was written. */
static inline void* kova_sentinel(void) {
  static char byte;
  return &byte;
}

/* The kOVA id of an object, copied (the getter's text lasts only until its next call). */
static inline void kova_copy_kova_id(const kova_object* object, char* out, size_t size) {
  size_t length = 0;
  const char* id = kova_object_kova_id(object, &length);
  CHECK(id != NULL);
  CHECK(length < size);
  memcpy(out, id, length);
  out[length] = '\0';
}

/* Goes through an iteration, checking the kOVA ids it gives in order, then its end (KOVA_S_FALSE
 * and a NULL object, twice). */
static inline void kova_check_iteration(const char* file, int line, kova_iterator* iterator,
                                        const char* const* expected, size_t count) {
  if (iterator == NULL || kova_iterator_count(iterator) != count) {
    kova_check_fail_at(file, line, "iterator count");
    fprintf(stderr, "  expected %zu objects, got %zu\n", count,
            iterator == NULL ? (size_t)0 : kova_iterator_count(iterator));
    exit(1);
  }
  for (size_t i = 0; i < count; ++i) {
    kova_object* object = NULL;
    const int32_t status = kova_iterator_next(iterator, &object);
    if (status != KOVA_S_OK || object == NULL) {
      kova_check_fail_at(file, line, "kova_iterator_next gives the next object");
      fprintf(stderr, "  at object %zu: status %ld\n", i, (long)status);
      exit(1);
    }
    size_t length = 0;
    const char* id = kova_object_kova_id(object, &length);
    kova_check_bytes(file, line, "kOVA id of the iteration's object", expected[i], strlen(expected[i]), id, length);
    kova_object_release(object);
  }
  for (int round = 0; round < 2; ++round) {
    kova_object* object = (kova_object*)kova_sentinel();
    const int32_t status = kova_iterator_next(iterator, &object);
    if (status != KOVA_S_FALSE || object != NULL) {
      kova_check_fail_at(file, line, "kova_iterator_next at the end gives KOVA_S_FALSE and NULL");
      fprintf(stderr, "  status %ld, object %s\n", (long)status, object == NULL ? "NULL" : "not NULL");
      exit(1);
    }
  }
}

#define CHECK_ITERATION(iterator, ...)                                      \
  do {                                                                      \
    static const char* const kova_expected_[] = {__VA_ARGS__};              \
    kova_check_iteration(__FILE__, __LINE__, (iterator), kova_expected_,    \
                         sizeof kova_expected_ / sizeof kova_expected_[0]); \
  } while (0)

/* A new reference or instance with its texts set (NUL-terminated), stamp as given. */
static inline kova_object* kova_make_object(int kind, const char* kova_id, const char* plexo_id, const char* stamp,
                                            int is_local) {
  kova_object* object = kind == KOVA_REFERENCE ? kova_reference_new() : kova_instance_new();
  CHECK(object != NULL);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(object, kova_id, KOVA_NUL_TERMINATED));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_plexo_id(object, plexo_id, KOVA_NUL_TERMINATED));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, stamp, KOVA_NUL_TERMINATED));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_is_local(object, is_local));
  return object;
}

static inline kova_object* kova_make_reference(const char* kova_id, const char* plexo_id, int is_local) {
  return kova_make_object(KOVA_REFERENCE, kova_id, plexo_id, "V2:refstamp", is_local);
}

static inline kova_object* kova_make_instance(const char* kova_id, const char* plexo_id, const char* ref_id) {
  kova_object* object = kova_make_object(KOVA_INSTANCE, kova_id, plexo_id, "V1:inststamp", 0);
  CHECK_STATUS(KOVA_S_OK, kova_instance_set_ref_id(object, ref_id, KOVA_NUL_TERMINATED));
  return object;
}

/* The kOVA id of an object equals `expected`. */
#define CHECK_KOVA_ID(expected, object)                            \
  do {                                                             \
    size_t kova_l_ = 0;                                            \
    const char* kova_i_ = kova_object_kova_id((object), &kova_l_); \
    CHECK_MEM((expected), strlen(expected), kova_i_, kova_l_);     \
  } while (0)

#endif /* KOVA_TESTS_CAPI_CHECK_H_ */
