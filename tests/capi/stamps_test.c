/* Stamp texts, attribute sets and the stamp computed from them.
 *
 * The cases named compute_enabled_* run with "DONOTUSE_ENABLEKSSGEN" set (tests/capi.cmake), the
 * others with it unset. Expected stamps are base64 of the SHA-256 digest of the stamp text, made
 * with: printf %s 'TEXT' | openssl dgst -sha256 -binary | base64. The stamp text is each attribute
 * in ascending name order, "name:SET:value" or "name:UNSET:", run together; reals with one
 * decimal, booleans TRUE and FALSE, times in milliseconds, list elements joined by U+0007. */
#include "check.h"

/* The stamp of the empty text. */
static const char kEmptyTextStamp[] = "47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=";
/* "Mass:SET:2.5Name:SET:HousingQuantity:SET:4" */
static const char kMassNameQuantity[] = "JuBhkmTY7eNnRdapcnkvZBoN6aUl3AJhptnEPZOVSX8=";
/* "Created:SET:1700000000000Finish:SET:2HoleDiameters:SET:6.5\a8.5\a10.5Mass:SET:2.5Material:UNSET:"
 * "Name:SET:HousingPartNumber:SET:HSG-4410Quantity:SET:4Tolerance:UNSET:Visible:SET:TRUE" */
static const char kHousing[] = "q+dG5/aqLtNZOuHc8EkmIkjHEcRXedj5qjBJI6TMoMw=";
/* "B:SET:TRUE\aFALSEE:SET:I:SET:1\a-2R:SET:6.5\a8.5S:SET:a\abcT:SET:1000\a-1000U:UNSET:" */
static const char kLists[] = "0xS8sFagk33f7eCeYuOhQll0HmVmrDlyVlHmKfZO7hk=";
/* "Flag:SET:FALSENeg:SET:-42Whole:SET:3.0" */
static const char kScalars[] = "QLwFYdsb/r3PdqjOHc644LyMeo5QkgG48Ewyqwdwvf8=";
/* "a:SET:1b:SET:x" */
static const char kAB[] = "48j5oIe8+7rOK38P3qy2MubFB+Q+zTh44bWQqbhWPug=";

/* A text handed out by a stamp text function, checked and freed. */
#define CHECK_HANDED(expected, call_with_out) \
  do {                                        \
    char* out = NULL;                         \
    size_t out_length = 0;                    \
    CHECK_STATUS(KOVA_S_OK, call_with_out);   \
    CHECK_TEXT((expected), out, out_length);  \
    kova_free(out);                           \
  } while (0)

/* ---- Stamp texts ----------------------------------------------------------------------------- */

TEST(with_version) {
  CHECK_HANDED("V12:abc", kova_stamp_with_version("abc", 3, 12, &out, &out_length));
  CHECK_HANDED("V3:", kova_stamp_with_version("", 0, 3, &out, &out_length));
  CHECK_HANDED("V-1:x", kova_stamp_with_version("x", KOVA_NUL_TERMINATED, -1, &out, &out_length));
  CHECK_HANDED("V2147483647:x", kova_stamp_with_version("x", 1, 2147483647, &out, &out_length));
  CHECK_HANDED("V1:abc", kova_stamp_with_version("abcdef", 3, 1, &out, &out_length));
  CHECK_MESSAGES("");
}

TEST(without_version) {
  CHECK_HANDED("abc", kova_stamp_without_version("V3:abc", 6, &out, &out_length));
  /* Three characters dropped whatever the number of digits. */
  CHECK_HANDED(":abc", kova_stamp_without_version("V12:abc", KOVA_NUL_TERMINATED, &out, &out_length));
  CHECK_HANDED("abc", kova_stamp_without_version("V0KSS:abc", 9, &out, &out_length));
  CHECK_HANDED("", kova_stamp_without_version("V5:", 3, &out, &out_length));
  CHECK_HANDED("abc", kova_stamp_without_version("abc", 3, &out, &out_length));
  CHECK_HANDED(" V3:abc", kova_stamp_without_version(" V3:abc", 7, &out, &out_length));
  CHECK_HANDED("V:abc", kova_stamp_without_version("V:abc", 5, &out, &out_length));
  CHECK_HANDED("", kova_stamp_without_version("", 0, &out, &out_length));
  /* Only the given bytes count: "V3" alone carries no prefix. */
  CHECK_HANDED("V3", kova_stamp_without_version("V3:abc", 2, &out, &out_length));
}

TEST(stamp_version) {
  CHECK_INT(3, kova_stamp_version("V3:abc", 6));
  CHECK_INT(1, kova_stamp_version("V12:abc", KOVA_NUL_TERMINATED));
  CHECK_INT(9, kova_stamp_version("V987:x", 6));
  CHECK_INT(0, kova_stamp_version("V0KSS:abc", 9));
  CHECK_INT(5, kova_stamp_version("V5:", 3));
  CHECK_INT(-1, kova_stamp_version("abc", 3));
  CHECK_INT(-1, kova_stamp_version("", 0));
  CHECK_INT(-1, kova_stamp_version("V:abc", 5));
  CHECK_INT(-1, kova_stamp_version(" V3:abc", 7));
  CHECK_INT(-1, kova_stamp_version("v3:abc", 6));
  CHECK_INT(-1, kova_stamp_version("V3:abc", 2));
  CHECK_INT(-1, kova_stamp_version(NULL, 0));
  CHECK_INT(-1, kova_stamp_version(NULL, 4));
}

TEST(ce_prefix) {
  CHECK_HANDED("V0KSS:abc", kova_stamp_add_ce_prefix("abc", 3, &out, &out_length));
  CHECK_HANDED("V0KSS:", kova_stamp_add_ce_prefix("", 0, &out, &out_length));
  CHECK_INT(1, kova_stamp_has_ce_prefix("V0KSS:abc", 9));
  CHECK_INT(1, kova_stamp_has_ce_prefix("V0KSS:", KOVA_NUL_TERMINATED));
  CHECK_INT(0, kova_stamp_has_ce_prefix("V0KSS", 5));
  CHECK_INT(0, kova_stamp_has_ce_prefix("V0KSS:abc", 5));
  CHECK_INT(0, kova_stamp_has_ce_prefix(" V0KSS:abc", 10));
  CHECK_INT(0, kova_stamp_has_ce_prefix("v0kss:abc", 9));
  CHECK_INT(0, kova_stamp_has_ce_prefix("V1:abc", 6));
  CHECK_INT(0, kova_stamp_has_ce_prefix(NULL, 0));
  /* What add_ce_prefix gives has the prefix. */
  char* out = NULL;
  size_t out_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_add_ce_prefix("xyz", 3, &out, &out_length));
  CHECK_INT(1, kova_stamp_has_ce_prefix(out, out_length));
  kova_free(out);
}

TEST(from_ce) {
  /* "V0KSS:" and base64 of the SHA-256 digest of "cestamp" followed by the CE stamp. */
  CHECK_HANDED("V0KSS:Q9Qo/l/ljUEVerC0NCbRlwd3gDfRfthn7/rGE6iarYQ=",
               kova_stamp_from_ce("CESv1(x'01')", KOVA_NUL_TERMINATED, &out, &out_length));
  CHECK_HANDED("V0KSS:16PcHNaB+yF56F3dqim/cR5Upd5pNRyjG2VSG8non+I=",
               kova_stamp_from_ce("CESv1(x'd4bf9f590afe8d12624cb0b9b37ef9478f673e83')", 50, &out, &out_length));
  /* printf %s cestamp | openssl dgst -sha256 -binary | base64 */
  CHECK_HANDED("V0KSS:cHVVv64BBOMfat0AxK0UNt7mdnbhWMECuobH5+Jokws=", kova_stamp_from_ce("", 0, &out, &out_length));
}

TEST(from_ce_starts_with_the_ce_prefix) {
  const char* const ce_stamps[] = {"CESv1(x'02')", "anything at all", "CESv1(x'0A1B')"};
  for (size_t i = 0; i < sizeof ce_stamps / sizeof ce_stamps[0]; ++i) {
    char* out = NULL;
    size_t out_length = 0;
    CHECK_STATUS(KOVA_S_OK, kova_stamp_from_ce(ce_stamps[i], KOVA_NUL_TERMINATED, &out, &out_length));
    CHECK(out_length == 6 + 44);
    CHECK(strncmp(out, "V0KSS:", 6) == 0);
    CHECK_INT(1, kova_stamp_has_ce_prefix(out, out_length));
    CHECK_INT(0, kova_stamp_version(out, out_length));
    kova_free(out);
  }
}

TEST(stamp_texts_without_out_length) {
  char* out = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_with_version("s", 1, 4, &out, NULL));
  CHECK_STR("V4:s", out);
  kova_free(out);
  CHECK_STATUS(KOVA_S_OK, kova_stamp_without_version("V4:s", 4, &out, NULL));
  CHECK_STR("s", out);
  kova_free(out);
  CHECK_STATUS(KOVA_S_OK, kova_stamp_add_ce_prefix("s", 1, &out, NULL));
  CHECK_STR("V0KSS:s", out);
  kova_free(out);
  CHECK_STATUS(KOVA_S_OK, kova_stamp_from_ce("CESv1(x'01')", 12, &out, NULL));
  CHECK_STR("V0KSS:Q9Qo/l/ljUEVerC0NCbRlwd3gDfRfthn7/rGE6iarYQ=", out);
  kova_free(out);
}

/* ---- Attributes ------------------------------------------------------------------------------ */

TEST(attributes_every_setter_counts) {
  kova_attributes* attributes = kova_attributes_new();
  CHECK(attributes != NULL);
  CHECK_INT(0, kova_attributes_count(attributes));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "s", 1, "text", 4));
  CHECK_MESSAGES("");
  CHECK_INT(1, kova_attributes_count(attributes));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "i", 1, -42));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real(attributes, "r", 1, 2.5));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean(attributes, "b", 1, 1));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_time(attributes, "t", 1, 1700000000));
  CHECK_INT(5, kova_attributes_count(attributes));
  const int kinds[] = {KOVA_VALUE_STRING, KOVA_VALUE_INTEGER, KOVA_VALUE_REAL, KOVA_VALUE_BOOLEAN, KOVA_VALUE_TIME};
  const char* const unset_names[] = {"us", "ui", "ur", "ub", "ut"};
  for (size_t i = 0; i < 5; ++i) {
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_unset(attributes, unset_names[i], KOVA_NUL_TERMINATED, kinds[i]));
  }
  CHECK_INT(10, kova_attributes_count(attributes));
  kova_attributes_free(attributes);
}

TEST(attributes_every_list_setter_counts) {
  kova_attributes* attributes = kova_attributes_new();
  const char* const words[] = {"a", "bc", "def"};
  const size_t word_lengths[] = {1, 2, 3};
  const int32_t integers[] = {1, -2, 3};
  const double reals[] = {6.5, 8.5};
  const int booleans[] = {1, 0, 1};
  const int64_t times[] = {0, -1, 1700000000};
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string_list(attributes, "sl", 2, words, word_lengths, 3));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string_list(attributes, "sn", 2, words, NULL, 3));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer_list(attributes, "il", 2, integers, 3));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real_list(attributes, "rl", 2, reals, 2));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean_list(attributes, "bl", 2, booleans, 3));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_time_list(attributes, "tl", 2, times, 3));
  CHECK_INT(6, kova_attributes_count(attributes));
  /* Empty lists. */
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string_list(attributes, "e1", 2, words, word_lengths, 0));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer_list(attributes, "e2", 2, integers, 0));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real_list(attributes, "e3", 2, reals, 0));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean_list(attributes, "e4", 2, booleans, 0));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_time_list(attributes, "e5", 2, times, 0));
  CHECK_INT(11, kova_attributes_count(attributes));
  kova_attributes_free(attributes);
}

TEST(attributes_setting_a_name_again_replaces) {
  kova_attributes* attributes = kova_attributes_new();
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "Name", 4, "first", 5));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "Name", 4, "second", 6));
  CHECK_INT(1, kova_attributes_count(attributes));
  /* Whatever the kind of the new value. */
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "Name", KOVA_NUL_TERMINATED, 3));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_unset(attributes, "Name", 4, KOVA_VALUE_REAL));
  const int32_t values[] = {1, 2};
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer_list(attributes, "Name", 4, values, 2));
  CHECK_INT(1, kova_attributes_count(attributes));
  /* Names are compared byte by byte: another case, a longer name, are other names. */
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "name", 4, 3));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "Names", 5, 3));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "NamesXYZ", 4, 3));
  CHECK_INT(3, kova_attributes_count(attributes));
  kova_attributes_free(attributes);
}

TEST(attributes_unset_of_an_unknown_kind_refused) {
  kova_attributes* attributes = kova_attributes_new();
  const int kinds[] = {0, 6, -1, 100};
  for (size_t i = 0; i < sizeof kinds / sizeof kinds[0]; ++i) {
    CHECK_REFUSED(kova_attributes_set_unset(attributes, "u", 1, kinds[i]));
  }
  CHECK_INT(0, kova_attributes_count(attributes));
  kova_attributes_free(attributes);
}

TEST(compute_disabled_without_the_switch) {
  CHECK(getenv("DONOTUSE_ENABLEKSSGEN") == NULL);
  kova_attributes* attributes = kova_attributes_new();
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "Name", 4, "Housing", 7));
  char* stamp = kova_sentinel();
  size_t length = 777;
  CHECK_STATUS(KOVA_E_FAIL, kova_stamp_compute(attributes, &stamp, &length));
  CHECK(stamp == kova_sentinel());
  CHECK_INT(777, length);
  /* The empty set as well. */
  kova_attributes* empty = kova_attributes_new();
  CHECK_STATUS(KOVA_E_FAIL, kova_stamp_compute(empty, &stamp, &length));
  CHECK(stamp == kova_sentinel());
  kova_attributes_free(empty);
  kova_attributes_free(attributes);
}

/* ---- Stamps computed, "DONOTUSE_ENABLEKSSGEN" set -------------------------------------------- */

static void check_stamp(const kova_attributes* attributes, const char* expected) {
  char* stamp = NULL;
  size_t length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_compute(attributes, &stamp, &length));
  CHECK_TEXT(expected, stamp, length);
  kova_free(stamp);
}

/* The stamp of a set, copied into `out` (at least 64 bytes). */
static void stamp_of(const kova_attributes* attributes, char* out) {
  char* stamp = NULL;
  size_t length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_compute(attributes, &stamp, &length));
  CHECK(length > 0 && length < 64);
  memcpy(out, stamp, length + 1);
  kova_free(stamp);
}

static kova_attributes* mass_name_quantity(int reversed) {
  kova_attributes* attributes = kova_attributes_new();
  CHECK(attributes != NULL);
  if (reversed) {
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "Quantity", 8, 4));
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "Name", 4, "Housing", KOVA_NUL_TERMINATED));
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real(attributes, "Mass", 4, 2.5));
  } else {
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real(attributes, "Mass", 4, 2.5));
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "Name", 4, "Housing", KOVA_NUL_TERMINATED));
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "Quantity", 8, 4));
  }
  return attributes;
}

TEST(compute_enabled_empty_set) {
  CHECK(getenv("DONOTUSE_ENABLEKSSGEN") != NULL);
  kova_attributes* attributes = kova_attributes_new();
  check_stamp(attributes, kEmptyTextStamp);
  CHECK_MESSAGES("");
  kova_attributes_free(attributes);
}

TEST(compute_enabled_known_stamp) {
  kova_attributes* attributes = mass_name_quantity(0);
  check_stamp(attributes, kMassNameQuantity);
  kova_attributes_free(attributes);
}

TEST(compute_enabled_order_of_setting_does_not_matter) {
  kova_attributes* forward = mass_name_quantity(0);
  kova_attributes* reversed = mass_name_quantity(1);
  char a[64];
  char b[64];
  stamp_of(forward, a);
  stamp_of(reversed, b);
  CHECK_STR(a, b);
  CHECK_STR(kMassNameQuantity, b);
  kova_attributes_free(forward);
  kova_attributes_free(reversed);
}

TEST(compute_enabled_equal_sets_equal_stamps) {
  kova_attributes* a = kova_attributes_new();
  kova_attributes* b = kova_attributes_new();
  const double reals[] = {6.5, 8.5, 10.5};
  const char* const words[] = {"x", "y"};
  for (int i = 0; i < 2; ++i) {
    kova_attributes* set = i == 0 ? a : b;
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(set, "PartNumber", 10, "HSG-4410", 8));
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real_list(set, "HoleDiameters", 13, reals, 3));
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string_list(set, "Tags", 4, words, NULL, 2));
    CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean(set, "Visible", 7, 0));
  }
  char sa[64];
  char sb[64];
  stamp_of(a, sa);
  stamp_of(b, sb);
  CHECK_STR(sa, sb);
  CHECK(strcmp(sa, kEmptyTextStamp) != 0);
  /* Computing twice gives the same stamp. */
  stamp_of(a, sb);
  CHECK_STR(sa, sb);
  kova_attributes_free(a);
  kova_attributes_free(b);
}

TEST(compute_enabled_different_sets_different_stamps) {
  kova_attributes* base = mass_name_quantity(0);
  char reference_stamp[64];
  stamp_of(base, reference_stamp);
  char other[64];
  /* Another value. */
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(base, "Quantity", 8, 5));
  stamp_of(base, other);
  CHECK(strcmp(reference_stamp, other) != 0);
  /* Back to the first value: the first stamp again (setting a name again replaces it). */
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(base, "Quantity", 8, 4));
  stamp_of(base, other);
  CHECK_STR(reference_stamp, other);
  /* One more attribute. */
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean(base, "Visible", 7, 1));
  stamp_of(base, other);
  CHECK(strcmp(reference_stamp, other) != 0);
  /* The same value unset. */
  kova_attributes* unset = mass_name_quantity(0);
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_unset(unset, "Quantity", 8, KOVA_VALUE_INTEGER));
  stamp_of(unset, other);
  CHECK(strcmp(reference_stamp, other) != 0);
  kova_attributes_free(unset);
  kova_attributes_free(base);
}

TEST(compute_enabled_every_kind_of_value) {
  /* The attributes of examples/documents/attributes.json, Finish's enumeration value given as the
   * integer it is written as. */
  kova_attributes* attributes = kova_attributes_new();
  const double diameters[] = {6.5, 8.5, 10.5};
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "Name", 4, "Housing", 7));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "PartNumber", 10, "HSG-4410", 8));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real(attributes, "Mass", 4, 2.5));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "Quantity", 8, 4));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean(attributes, "Visible", 7, 1));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_unset(attributes, "Material", 8, KOVA_VALUE_STRING));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_time(attributes, "Created", 7, 1700000000));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "Finish", 6, 2));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_unset(attributes, "Tolerance", 9, KOVA_VALUE_REAL));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real_list(attributes, "HoleDiameters", 13, diameters, 3));
  CHECK_INT(10, kova_attributes_count(attributes));
  check_stamp(attributes, kHousing);
  kova_attributes_free(attributes);
}

TEST(compute_enabled_lists) {
  kova_attributes* attributes = kova_attributes_new();
  const int booleans[] = {1, 0};
  const int32_t integers[] = {1, -2};
  const double reals[] = {6.5, 8.5};
  const char* const words[] = {"a", "bcd"};
  const size_t word_lengths[] = {1, 2};
  const int64_t times[] = {1, -1};
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_time_list(attributes, "T", 1, times, 2));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string_list(attributes, "S", 1, words, word_lengths, 2));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real_list(attributes, "R", 1, reals, 2));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer_list(attributes, "I", 1, integers, 2));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer_list(attributes, "E", 1, integers, 0));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean_list(attributes, "B", 1, booleans, 2));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_unset(attributes, "U", 1, KOVA_VALUE_TIME));
  check_stamp(attributes, kLists);
  kova_attributes_free(attributes);
}

TEST(compute_enabled_scalars) {
  kova_attributes* attributes = kova_attributes_new();
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_real(attributes, "Whole", 5, 3.0));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "Neg", 3, -42));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_boolean(attributes, "Flag", 4, 0));
  check_stamp(attributes, kScalars);
  kova_attributes_free(attributes);
}

/* Lines that reach a log callback. */
typedef struct {
  int count;
  int stamp_lines;
  char last_stamp_message[256];
} stamp_log;

static void record_stamp_line(const char* context, const char* message, void* user) {
  stamp_log* log = user;
  ++log->count;
  if (strcmp(context, "KOVASynchroStampServices") == 0) {
    ++log->stamp_lines;
    snprintf(log->last_stamp_message, sizeof log->last_stamp_message, "%s", message);
  }
}

TEST(compute_enabled_logs_the_stamp_text) {
  kova_attributes* attributes = kova_attributes_new();
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "b", 1, "x", 1));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_integer(attributes, "a", 1, 1));
  stamp_log log = {0, 0, ""};
  /* The stamp service's lines are not failure reasons. */
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record_stamp_line, &log, KOVA_LOG_REASONS));
  check_stamp(attributes, kAB);
  CHECK_INT(0, log.count);
  /* Every line: the last one of the stamp service is the text it digested. */
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record_stamp_line, &log, KOVA_LOG_EVERYTHING));
  check_stamp(attributes, kAB);
  CHECK(log.stamp_lines >= 2);
  CHECK_STR("a:SET:1b:SET:x", log.last_stamp_message);
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(NULL, NULL, KOVA_LOG_REASONS));
  kova_attributes_free(attributes);
}

TEST(compute_enabled_without_length) {
  kova_attributes* attributes = mass_name_quantity(1);
  char* stamp = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_compute(attributes, &stamp, NULL));
  CHECK_STR(kMassNameQuantity, stamp);
  kova_free(stamp);
  kova_attributes_free(attributes);
}

TEST(compute_enabled_null_arguments) {
  kova_attributes* attributes = mass_name_quantity(0);
  char* stamp = kova_sentinel();
  CHECK_REFUSED(kova_stamp_compute(NULL, &stamp, NULL));
  CHECK_REFUSED(kova_stamp_compute(attributes, NULL, NULL));
  CHECK(stamp == kova_sentinel());
  kova_attributes_free(attributes);
}

static const kova_test_case cases[] = {
    TEST_CASE(with_version),
    TEST_CASE(without_version),
    TEST_CASE(stamp_version),
    TEST_CASE(ce_prefix),
    TEST_CASE(from_ce),
    TEST_CASE(from_ce_starts_with_the_ce_prefix),
    TEST_CASE(stamp_texts_without_out_length),
    TEST_CASE(attributes_every_setter_counts),
    TEST_CASE(attributes_every_list_setter_counts),
    TEST_CASE(attributes_setting_a_name_again_replaces),
    TEST_CASE(attributes_unset_of_an_unknown_kind_refused),
    TEST_CASE(compute_disabled_without_the_switch),
    TEST_CASE(compute_enabled_empty_set),
    TEST_CASE(compute_enabled_known_stamp),
    TEST_CASE(compute_enabled_order_of_setting_does_not_matter),
    TEST_CASE(compute_enabled_equal_sets_equal_stamps),
    TEST_CASE(compute_enabled_different_sets_different_stamps),
    TEST_CASE(compute_enabled_every_kind_of_value),
    TEST_CASE(compute_enabled_lists),
    TEST_CASE(compute_enabled_scalars),
    TEST_CASE(compute_enabled_logs_the_stamp_text),
    TEST_CASE(compute_enabled_without_length),
    TEST_CASE(compute_enabled_null_arguments),
};

RUN_TESTS(cases)
