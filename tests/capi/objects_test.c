/* Mapping objects: new objects, counts of handles, kinds, every getter and setter, the identity
 * rule, sharing, stamp comparisons and a reference's instances. */
#include "check.h"

static void check_text_field(const char* (*getter)(const kova_object*, size_t*), const kova_object* object,
                             const char* expected, size_t expected_length) {
  size_t length = 99;
  const char* text = getter(object, &length);
  CHECK(text != NULL);
  CHECK_MEM(expected, expected_length, text, length);
  CHECK(text[length] == '\0');
}

TEST(new_reference_defaults) {
  kova_object* reference = kova_reference_new();
  CHECK(reference != NULL);
  CHECK_INT(KOVA_REFERENCE, kova_object_kind(reference));
  check_text_field(kova_object_kova_id, reference, "", 0);
  check_text_field(kova_object_plexo_id, reference, "", 0);
  check_text_field(kova_object_custom_data, reference, "", 0);
  check_text_field(kova_object_stamp, reference, "", 0);
  CHECK(kova_instance_ref_id(reference, NULL) == NULL);
  CHECK_INT(0, kova_object_is_local(reference));
  CHECK_INT(3, kova_object_kss_version(reference));
  CHECK_INT(0, kova_object_stamp_is_from_ce(reference));
  CHECK_INT(1, kova_object_stamp_has_unset(reference));
  CHECK_INT(0, kova_reference_instance_count(reference));
  kova_object_release(reference);
}

TEST(new_instance_defaults) {
  kova_object* instance = kova_instance_new();
  CHECK(instance != NULL);
  CHECK_INT(KOVA_INSTANCE, kova_object_kind(instance));
  check_text_field(kova_object_kova_id, instance, "", 0);
  check_text_field(kova_object_plexo_id, instance, "", 0);
  check_text_field(kova_object_custom_data, instance, "", 0);
  check_text_field(kova_object_stamp, instance, "", 0);
  check_text_field(kova_instance_ref_id, instance, "", 0);
  CHECK_INT(0, kova_object_is_local(instance));
  CHECK_INT(3, kova_object_kss_version(instance));
  CHECK_INT(0, kova_reference_instance_count(instance));
  kova_object_release(instance);
}

TEST(retain_and_release) {
  kova_object* object = kova_make_reference("R", "P", 1);
  CHECK(kova_object_retain(object) == object);
  CHECK(kova_object_retain(object) == object);
  kova_object_release(object);
  kova_object_release(object);
  /* One reference is left: the object is still there. */
  CHECK_KOVA_ID("R", object);
  CHECK_INT(1, kova_object_shares(object, object));
  kova_object_release(object);
  CHECK(kova_object_retain(NULL) == NULL);
}

TEST(object_lives_while_a_table_holds_it) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("KEPT", "P-KEPT", 1);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  kova_object_release(reference);
  kova_object* found = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_plexo_id(table, "P-KEPT", 6, &found));
  CHECK_KOVA_ID("KEPT", found);
  kova_object_release(found);
  kova_table_free(table);
}

TEST(text_setters_and_getters) {
  kova_object* instance = kova_instance_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(instance, "K-1", 3));
  CHECK_MESSAGES("");
  CHECK_STATUS(KOVA_S_OK, kova_object_set_plexo_id(instance, "ins-0001", KOVA_NUL_TERMINATED));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(instance, "{\"a\":1}", 7));
  CHECK_STATUS(KOVA_S_OK, kova_instance_set_ref_id(instance, "REF-9", KOVA_NUL_TERMINATED));
  check_text_field(kova_object_kova_id, instance, "K-1", 3);
  check_text_field(kova_object_plexo_id, instance, "ins-0001", 8);
  check_text_field(kova_object_custom_data, instance, "{\"a\":1}", 7);
  check_text_field(kova_instance_ref_id, instance, "REF-9", 5);
  /* Setting again replaces; the empty text is a text like any other. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(instance, "", 0));
  check_text_field(kova_object_kova_id, instance, "", 0);
  kova_object_release(instance);
}

TEST(text_setters_read_exactly_length_bytes) {
  kova_object* object = kova_reference_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(object, "ABCDEF", 3));
  check_text_field(kova_object_kova_id, object, "ABC", 3);
  /* NUL bytes inside the length are part of the text. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(object, "a\0b\0", 4));
  check_text_field(kova_object_custom_data, object, "a\0b\0", 4);
  /* KOVA_NUL_TERMINATED stops at the first NUL. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_plexo_id(object, "xy\0z", KOVA_NUL_TERMINATED));
  check_text_field(kova_object_plexo_id, object, "xy", 2);
  kova_object_release(object);
}

TEST(getter_text_lasts_until_the_same_getter_is_called_again) {
  kova_object* object = kova_make_reference("first id", "plexo", 0);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(object, "custom", 6));
  size_t id_length = 0;
  const char* id = kova_object_kova_id(object, &id_length);
  /* Other getters on the same handle leave it valid. */
  CHECK_STR("plexo", kova_object_plexo_id(object, NULL));
  CHECK_STR("custom", kova_object_custom_data(object, NULL));
  CHECK_STR("refstamp", kova_object_stamp(object, NULL));
  CHECK_INT(8, id_length);
  CHECK_MEM("first id", 8, id, id_length);
  /* So does the same getter on another handle. */
  kova_object* other = kova_make_reference("second", "p2", 1);
  CHECK_STR("second", kova_object_kova_id(other, NULL));
  CHECK_MEM("first id", 8, id, id_length);
  kova_object_release(other);
  kova_object_release(object);
}

TEST(getters_take_a_null_length) {
  kova_object* object = kova_make_instance("K", "P", "R");
  CHECK_STR("K", kova_object_kova_id(object, NULL));
  CHECK_STR("P", kova_object_plexo_id(object, NULL));
  CHECK_STR("", kova_object_custom_data(object, NULL));
  CHECK_STR("inststamp", kova_object_stamp(object, NULL));
  CHECK_STR("R", kova_instance_ref_id(object, NULL));
  kova_object_release(object);
}

TEST(set_stamp_with_version) {
  kova_object* object = kova_instance_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, "V2:abc", 6));
  check_text_field(kova_object_stamp, object, "abc", 3);
  CHECK_INT(2, kova_object_kss_version(object));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, "V7:", 3));
  check_text_field(kova_object_stamp, object, "", 0);
  CHECK_INT(7, kova_object_kss_version(object));
  kova_object_release(object);
}

TEST(set_stamp_reads_one_version_digit) {
  kova_object* object = kova_reference_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, "V12:abc", KOVA_NUL_TERMINATED));
  check_text_field(kova_object_stamp, object, ":abc", 4);
  CHECK_INT(1, kova_object_kss_version(object));
  kova_object_release(object);
}

TEST(set_stamp_without_version_keeps_the_version) {
  kova_object* object = kova_reference_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, "bare", 4));
  check_text_field(kova_object_stamp, object, "bare", 4);
  CHECK_INT(3, kova_object_kss_version(object));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kss_version(object, 6));
  const char* const others[] = {"V:abc", " V2:abc", "v2:abc", "x"};
  for (size_t i = 0; i < sizeof others / sizeof others[0]; ++i) {
    CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, others[i], KOVA_NUL_TERMINATED));
    check_text_field(kova_object_stamp, object, others[i], strlen(others[i]));
    CHECK_INT(6, kova_object_kss_version(object));
  }
  kova_object_release(object);
}

TEST(set_kss_version_as_given) {
  kova_object* object = kova_instance_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kss_version(object, 0));
  CHECK_INT(0, kova_object_kss_version(object));
  CHECK_INT(1, kova_object_stamp_is_from_ce(object));
  CHECK_INT(0, kova_object_stamp_has_unset(object));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kss_version(object, 1));
  CHECK_INT(0, kova_object_stamp_is_from_ce(object));
  CHECK_INT(0, kova_object_stamp_has_unset(object));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kss_version(object, 2));
  CHECK_INT(0, kova_object_stamp_is_from_ce(object));
  CHECK_INT(1, kova_object_stamp_has_unset(object));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kss_version(object, -4));
  CHECK_INT(-4, kova_object_kss_version(object));
  CHECK_INT(0, kova_object_stamp_is_from_ce(object));
  CHECK_INT(0, kova_object_stamp_has_unset(object));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kss_version(object, 2147483647));
  CHECK_INT(2147483647, kova_object_kss_version(object));
  kova_object_release(object);
}

TEST(set_is_local) {
  kova_object* object = kova_reference_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_is_local(object, 1));
  CHECK_INT(1, kova_object_is_local(object));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_is_local(object, 0));
  CHECK_INT(0, kova_object_is_local(object));
  /* Any other number is true; the getter says 1. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_is_local(object, 42));
  CHECK_INT(1, kova_object_is_local(object));
  kova_object_release(object);
}

TEST(ref_id_of_a_reference_refused) {
  kova_object* reference = kova_make_reference("R", "P", 0);
  CHECK_REFUSED(kova_instance_set_ref_id(reference, "X", 1));
  CHECK(kova_instance_ref_id(reference, NULL) == NULL);
  kova_object_release(reference);
}

TEST(identity_rule) {
  kova_object* a = kova_make_reference("K1", "P1", 0);
  kova_object* same_kova = kova_make_reference("K1", "P2", 0);
  kova_object* same_plexo = kova_make_reference("K2", "P1", 0);
  kova_object* neither = kova_make_reference("K3", "P3", 0);
  kova_object* instance = kova_make_instance("K1", "PX", "R");
  CHECK_INT(1, kova_object_same(a, a));
  CHECK_INT(1, kova_object_same(a, same_kova));
  CHECK_INT(1, kova_object_same(a, same_plexo));
  CHECK_INT(1, kova_object_same(same_plexo, a));
  CHECK_INT(0, kova_object_same(a, neither));
  CHECK_INT(0, kova_object_same(same_kova, same_plexo));
  /* The rule looks at the ids only. */
  CHECK_INT(1, kova_object_same(a, instance));
  kova_object_release(a);
  kova_object_release(same_kova);
  kova_object_release(same_plexo);
  kova_object_release(neither);
  kova_object_release(instance);
}

TEST(sharing) {
  kova_object* a = kova_make_reference("K", "P", 0);
  kova_object* twin = kova_make_reference("K", "P", 0);
  CHECK_INT(1, kova_object_shares(a, a));
  CHECK_INT(1, kova_object_same(a, twin));
  CHECK_INT(0, kova_object_shares(a, twin));
  /* A handle given back by the table shares the object that was added. */
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, a));
  kova_object* found = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, "K", 1, &found));
  CHECK(found != NULL);
  CHECK_INT(1, kova_object_shares(found, a));
  CHECK_INT(0, kova_object_shares(found, twin));
  /* A change through one handle is seen through the other. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(found, "seen", 4));
  CHECK_STR("seen", kova_object_custom_data(a, NULL));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(a, "V5:new", 6));
  CHECK_STR("new", kova_object_stamp(found, NULL));
  CHECK_INT(5, kova_object_kss_version(found));
  kova_object_release(found);
  kova_object_release(a);
  kova_object_release(twin);
  kova_table_free(table);
}

TEST(stamp_equals) {
  kova_object* a = kova_instance_new();
  kova_object* b = kova_reference_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(a, "V1:abc", 6));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(b, "V2:abc", 6));
  /* Stored stamps, without their versions. */
  CHECK_INT(1, kova_object_stamp_equals(a, b));
  CHECK_INT(1, kova_object_stamp_equals(a, a));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(b, "abd", 3));
  CHECK_INT(0, kova_object_stamp_equals(a, b));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(b, "ABC", 3));
  CHECK_INT(0, kova_object_stamp_equals(a, b));
  kova_object_release(a);
  kova_object_release(b);
}

TEST(stamp_equals_text) {
  kova_object* object = kova_instance_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, "V2:abc", 6));
  CHECK_INT(1, kova_object_stamp_equals_text(object, "abc", 3));
  CHECK_INT(1, kova_object_stamp_equals_text(object, "abc", KOVA_NUL_TERMINATED));
  CHECK_INT(1, kova_object_stamp_equals_text(object, "abcdef", 3));
  /* The text is compared as it is, prefix included. */
  CHECK_INT(0, kova_object_stamp_equals_text(object, "V2:abc", 6));
  CHECK_INT(0, kova_object_stamp_equals_text(object, "ab", 2));
  CHECK_INT(0, kova_object_stamp_equals_text(object, "abc\0", 4));
  kova_object_release(object);
}

TEST(reference_instances_add_count_remove) {
  kova_object* reference = kova_make_reference("R", "PR", 0);
  kova_object* i1 = kova_make_instance("R.1", "P1", "X");
  kova_object* i2 = kova_make_instance("R.2", "P2", "X");
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(reference, i1));
  CHECK_MESSAGES("");
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(reference, i2));
  CHECK_INT(2, kova_reference_instance_count(reference));
  CHECK_STATUS(KOVA_S_OK, kova_reference_remove_instance(reference, i1));
  CHECK_INT(1, kova_reference_instance_count(reference));
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(reference, &iterator));
  CHECK_ITERATION(iterator, "R.2");
  kova_iterator_free(iterator);
  kova_object_release(reference);
  kova_object_release(i1);
  kova_object_release(i2);
}

TEST(reference_refuses_the_same_instance_twice) {
  kova_object* reference = kova_make_reference("R", "PR", 0);
  kova_object* instance = kova_make_instance("R.1", "P1", "X");
  kova_object* same_kova = kova_make_instance("R.1", "P9", "X");
  kova_object* same_plexo = kova_make_instance("R.9", "P1", "X");
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(reference, instance));
  CHECK_STATUS(KOVA_E_FAIL, kova_reference_add_instance(reference, instance));
  CHECK_STATUS(KOVA_E_FAIL, kova_reference_add_instance(reference, same_kova));
  CHECK_STATUS(KOVA_E_FAIL, kova_reference_add_instance(reference, same_plexo));
  CHECK_INT(1, kova_reference_instance_count(reference));
  kova_object_release(reference);
  kova_object_release(instance);
  kova_object_release(same_kova);
  kova_object_release(same_plexo);
}

TEST(reference_refuses_to_remove_what_it_does_not_hold) {
  kova_object* reference = kova_make_reference("R", "PR", 0);
  kova_object* held = kova_make_instance("R.1", "P1", "X");
  kova_object* stranger = kova_make_instance("S.1", "PS", "X");
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(reference, held));
  CHECK_STATUS(KOVA_E_FAIL, kova_reference_remove_instance(reference, stranger));
  CHECK_INT(1, kova_reference_instance_count(reference));
  CHECK_STATUS(KOVA_S_OK, kova_reference_remove_instance(reference, held));
  CHECK_STATUS(KOVA_E_FAIL, kova_reference_remove_instance(reference, held));
  CHECK_INT(0, kova_reference_instance_count(reference));
  kova_object_release(reference);
  kova_object_release(held);
  kova_object_release(stranger);
}

TEST(reference_instances_wrong_kinds_refused) {
  kova_object* reference = kova_make_reference("R", "PR", 0);
  kova_object* other_reference = kova_make_reference("S", "PS", 0);
  kova_object* instance = kova_make_instance("I", "PI", "R");
  CHECK_REFUSED(kova_reference_add_instance(reference, other_reference));
  CHECK_REFUSED(kova_reference_add_instance(instance, instance));
  CHECK_REFUSED(kova_reference_add_instance(instance, reference));
  CHECK_REFUSED(kova_reference_remove_instance(reference, other_reference));
  CHECK_REFUSED(kova_reference_remove_instance(instance, instance));
  CHECK_INT(0, kova_reference_instance_count(reference));
  CHECK_INT(0, kova_reference_instance_count(instance));
  kova_object_release(reference);
  kova_object_release(other_reference);
  kova_object_release(instance);
}

TEST(instance_added_to_a_reference_is_shared) {
  kova_object* reference = kova_make_reference("R", "PR", 0);
  kova_object* instance = kova_make_instance("R.1", "P1", "X");
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(reference, instance));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_plexo_id(instance, "P-changed", KOVA_NUL_TERMINATED));
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(reference, &iterator));
  kova_object* held = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &held));
  CHECK_INT(1, kova_object_shares(held, instance));
  CHECK_STR("P-changed", kova_object_plexo_id(held, NULL));
  kova_object_release(held);
  kova_iterator_free(iterator);
  /* The reference keeps the instance alive. */
  kova_object_release(instance);
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(reference, &iterator));
  CHECK_ITERATION(iterator, "R.1");
  kova_iterator_free(iterator);
  kova_object_release(reference);
}

TEST(changes_are_seen_by_the_table) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("OLD", "P-OLD", 1);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(reference, "NEW", 3));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_plexo_id(reference, "P-NEW", 5));
  kova_object* found = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "OLD", 3, &found));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_plexo_id(table, "P-OLD", 5, &found));
  CHECK(found == kova_sentinel());
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_plexo_id(table, "P-NEW", 5, &found));
  CHECK_INT(1, kova_object_shares(found, reference));
  kova_object_release(found);
  kova_object_release(reference);
  kova_table_free(table);
}

static const kova_test_case cases[] = {
    TEST_CASE(new_reference_defaults),
    TEST_CASE(new_instance_defaults),
    TEST_CASE(retain_and_release),
    TEST_CASE(object_lives_while_a_table_holds_it),
    TEST_CASE(text_setters_and_getters),
    TEST_CASE(text_setters_read_exactly_length_bytes),
    TEST_CASE(getter_text_lasts_until_the_same_getter_is_called_again),
    TEST_CASE(getters_take_a_null_length),
    TEST_CASE(set_stamp_with_version),
    TEST_CASE(set_stamp_reads_one_version_digit),
    TEST_CASE(set_stamp_without_version_keeps_the_version),
    TEST_CASE(set_kss_version_as_given),
    TEST_CASE(set_is_local),
    TEST_CASE(ref_id_of_a_reference_refused),
    TEST_CASE(identity_rule),
    TEST_CASE(sharing),
    TEST_CASE(stamp_equals),
    TEST_CASE(stamp_equals_text),
    TEST_CASE(reference_instances_add_count_remove),
    TEST_CASE(reference_refuses_the_same_instance_twice),
    TEST_CASE(reference_refuses_to_remove_what_it_does_not_hold),
    TEST_CASE(reference_instances_wrong_kinds_refused),
    TEST_CASE(instance_added_to_a_reference_is_shared),
    TEST_CASE(changes_are_seen_by_the_table),
};

RUN_TESTS(cases)
