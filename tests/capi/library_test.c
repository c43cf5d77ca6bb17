/* The library as a whole: its version, kova_free and kova_last_messages. */
#include "check.h"

#include <ctype.h>

#ifndef KOVA_EXPECTED_VERSION
#error "KOVA_EXPECTED_VERSION must be the project's version"
#endif

static const char kEmptyOrInvalid[] = "KOVA JSON EMPTY OR INVALID\n";

static void read_text(const char* text, int32_t expected_status) {
  kova_table* table = kova_table_new();
  CHECK(table != NULL);
  CHECK_STATUS(expected_status, kova_table_read(table, text, KOVA_NUL_TERMINATED));
  kova_table_free(table);
}

TEST(version_is_major_minor_patch) {
  const char* version = kova_version();
  CHECK(version != NULL);
  /* Three numbers joined by dots. */
  const char* p = version;
  for (int part = 0; part < 3; ++part) {
    CHECK(isdigit((unsigned char)*p));
    while (isdigit((unsigned char)*p)) ++p;
    if (part < 2) {
      CHECK(*p == '.');
      ++p;
    }
  }
  CHECK(*p == '\0');
  CHECK_STR(KOVA_EXPECTED_VERSION, version);
}

TEST(version_is_static_text) {
  const char* first = kova_version();
  read_text("{}", KOVA_E_FAIL);
  const char* second = kova_version();
  CHECK(first == second);
  CHECK_STR(KOVA_EXPECTED_VERSION, first);
}

TEST(free_takes_handed_texts_and_null) {
  char* text = NULL;
  size_t length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_add_ce_prefix("abc", 3, &text, &length));
  CHECK_TEXT("V0KSS:abc", text, length);
  kova_free(text);
  kova_free(NULL);
  /* The library goes on working. */
  CHECK_STATUS(KOVA_S_OK, kova_stamp_add_ce_prefix("x", 1, &text, NULL));
  CHECK_STR("V0KSS:x", text);
  kova_free(text);
}

TEST(last_messages_empty_before_any_call) {
  const char* messages = kova_last_messages();
  CHECK(messages != NULL);
  CHECK_STR("", messages);
}

TEST(last_messages_reason_of_a_refused_document) {
  read_text("{}", KOVA_E_FAIL);
  CHECK_MESSAGES(kEmptyOrInvalid);
  /* Asking twice changes nothing. */
  CHECK_MESSAGES(kEmptyOrInvalid);
}

TEST(last_messages_one_line_per_missing_key) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("broken_v11.json", KOVA_E_FAIL);
  CHECK_MESSAGES("UNVALUATED MANDATORY FIELD IsLocal\nUNVALUATED MANDATORY FIELD KOVASynchroStamp\n");
  kova_table_free(table);
}

TEST(last_messages_emptied_by_a_success) {
  kova_table* table = kova_table_new();
  CHECK(table != NULL);
  CHECK_STATUS(KOVA_E_FAIL, kova_table_read(table, "{}", 2));
  CHECK_MESSAGES(kEmptyOrInvalid);
  CHECK_STATUS(KOVA_S_OK, kova_table_clear(table));
  CHECK_MESSAGES("");
  kova_table_free(table);
}

TEST(last_messages_emptied_by_a_success_elsewhere) {
  read_text("{\"version\": 13, \"References\": []}", KOVA_E_FAIL);
  CHECK_MESSAGES("UNSUPPORTED VERSION ( version > 11 )\n");
  char* text = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_with_version("abc", 3, 2, &text, NULL));
  CHECK_MESSAGES("");
  kova_free(text);
}

TEST(last_messages_replaced_by_the_next_failure) {
  read_text("{}", KOVA_E_FAIL);
  read_text("{\"version\": 5, \"References\": []}", KOVA_E_FAIL);
  CHECK_MESSAGES("UNSUPPORTED VERSION ( version < 6 )\n");
}

TEST(last_messages_kept_by_getters) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_reference_new();
  CHECK(table != NULL && reference != NULL);
  CHECK_STATUS(KOVA_E_FAIL, kova_table_read(table, "{}", KOVA_NUL_TERMINATED));
  /* Getters return their value directly and leave the messages alone. */
  CHECK_INT(0, kova_table_reference_count(table));
  CHECK_INT(0, kova_table_instance_count(table));
  CHECK_INT(0, kova_table_has_root(table));
  CHECK_INT(KOVA_REFERENCE, kova_object_kind(reference));
  CHECK_INT(3, kova_object_kss_version(reference));
  CHECK(kova_object_kova_id(reference, NULL) != NULL);
  CHECK_INT(0, kova_object_is_local(reference));
  CHECK(kova_version() != NULL);
  CHECK_INT(-1, kova_stamp_version("abc", 3));
  CHECK_INT(0, kova_stamp_has_ce_prefix("abc", 3));
  CHECK_MESSAGES(kEmptyOrInvalid);
  kova_object_release(reference);
  kova_table_free(table);
}

TEST(last_messages_need_no_environment_switch) {
  CHECK(getenv("ActivateKOVALogger") == NULL);
  CHECK_INT(0, kova_log_is_active());
  read_text("{\"version\": 13, \"References\": []}", KOVA_E_FAIL);
  CHECK_MESSAGES("UNSUPPORTED VERSION ( version > 11 )\n");
  /* Collecting the reasons does not switch the diagnostic lines on. */
  CHECK_INT(0, kova_log_is_active());
}

TEST(last_messages_of_a_refused_argument) {
  CHECK_REFUSED(kova_table_clear(NULL));
  CHECK_REFUSED(kova_object_set_kova_id(NULL, "x", 1));
}

static const kova_test_case cases[] = {
    TEST_CASE(version_is_major_minor_patch),
    TEST_CASE(version_is_static_text),
    TEST_CASE(free_takes_handed_texts_and_null),
    TEST_CASE(last_messages_empty_before_any_call),
    TEST_CASE(last_messages_reason_of_a_refused_document),
    TEST_CASE(last_messages_one_line_per_missing_key),
    TEST_CASE(last_messages_emptied_by_a_success),
    TEST_CASE(last_messages_emptied_by_a_success_elsewhere),
    TEST_CASE(last_messages_replaced_by_the_next_failure),
    TEST_CASE(last_messages_kept_by_getters),
    TEST_CASE(last_messages_need_no_environment_switch),
    TEST_CASE(last_messages_of_a_refused_argument),
};

RUN_TESTS(cases)
