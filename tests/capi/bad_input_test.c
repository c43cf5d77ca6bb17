/* Bad input: NULL for every pointer argument of every function, lengths that do not match the
 * text, invalid UTF-8, hostile documents, handles used after their table is gone. */
#include "check.h"

#define CURRENT_VERSION 12

/* A reference and an instance for the calls that need valid objects besides the NULL one. */
static kova_object* reference_object(void) { return kova_make_reference("R", "PR", 0); }
static kova_object* instance_object(void) { return kova_make_instance("I", "PI", "R"); }

/* ---- NULL arguments -------------------------------------------------------------------------- */

TEST(null_library_arguments) {
  kova_free(NULL);
  CHECK(kova_last_messages() != NULL);
  CHECK(kova_version() != NULL);
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(NULL, NULL, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(NULL, NULL, KOVA_LOG_EVERYTHING));
  CHECK_INT(0, kova_log_is_active());
}

TEST(null_table_arguments) {
  kova_table* table = kova_table_new();
  kova_object* reference = reference_object();
  kova_object* instance = instance_object();
  kova_table_free(NULL);
  CHECK_REFUSED(kova_table_clear(NULL));
  CHECK_REFUSED(kova_table_read(NULL, "{}", 2));
  CHECK_REFUSED(kova_table_read(table, NULL, 5));
  CHECK_REFUSED(kova_table_read(table, NULL, KOVA_NUL_TERMINATED));
  char* text = kova_sentinel();
  size_t length = 31;
  CHECK_REFUSED(kova_table_write(NULL, 0, &text, &length));
  CHECK(text == kova_sentinel());
  CHECK_INT(31, length);
  CHECK_REFUSED(kova_table_write(table, 0, NULL, &length));
  CHECK_REFUSED(kova_table_write(table, 1, NULL, NULL));
  CHECK_INT(31, length);
  CHECK_INT(0, kova_table_reference_count(NULL));
  CHECK_INT(0, kova_table_instance_count(NULL));
  CHECK_INT(KOVA_E_INVALIDARG, kova_table_version(NULL));
  CHECK_REFUSED(kova_table_add_reference(NULL, reference));
  CHECK_REFUSED(kova_table_add_reference(table, NULL));
  CHECK_REFUSED(kova_table_remove_reference(NULL, reference));
  CHECK_REFUSED(kova_table_remove_reference(table, NULL));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  CHECK_REFUSED(kova_table_add_instance(NULL, instance, reference));
  CHECK_REFUSED(kova_table_add_instance(table, NULL, reference));
  CHECK_REFUSED(kova_table_add_instance(table, instance, NULL));
  CHECK_REFUSED(kova_table_remove_instance(NULL, instance, reference));
  CHECK_REFUSED(kova_table_remove_instance(table, NULL, reference));
  CHECK_REFUSED(kova_table_remove_instance(table, instance, NULL));
  /* Nothing was done by the refused calls. */
  CHECK_INT(1, kova_table_reference_count(table));
  CHECK_INT(0, kova_table_instance_count(table));
  CHECK_INT(CURRENT_VERSION, kova_table_version(table));
  kova_object_release(reference);
  kova_object_release(instance);
  kova_table_free(table);
}

TEST(null_lookup_arguments) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  int32_t (*const finds[])(kova_table*, const char*, size_t, kova_object**) = {
      kova_table_find_reference_by_kova_id, kova_table_find_reference_by_plexo_id, kova_table_find_instance_by_kova_id,
      kova_table_find_instance_by_plexo_id};
  for (size_t i = 0; i < 4; ++i) {
    kova_object* out = kova_sentinel();
    CHECK_REFUSED(finds[i](NULL, "GBX-100", 7, &out));
    CHECK_REFUSED(finds[i](table, NULL, 7, &out));
    CHECK_REFUSED(finds[i](table, NULL, KOVA_NUL_TERMINATED, &out));
    CHECK_REFUSED(finds[i](table, "GBX-100", 7, NULL));
    CHECK(out == kova_sentinel());
    /* NULL with length 0 is the empty id, which no object of the table has. */
    CHECK_STATUS(KOVA_E_FAIL, finds[i](table, NULL, 0, &out));
    CHECK(out == kova_sentinel());
  }
  kova_object* root = kova_sentinel();
  CHECK_REFUSED(kova_table_root(NULL, &root));
  CHECK(root == kova_sentinel());
  CHECK_REFUSED(kova_table_root(table, NULL));
  CHECK_INT(0, kova_table_has_root(NULL));
  kova_table_free(table);
}

TEST(null_iteration_arguments) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v6_bracket.json", KOVA_S_OK);
  kova_iterator* iterator = kova_sentinel();
  CHECK_REFUSED(kova_table_references(NULL, &iterator));
  CHECK_REFUSED(kova_table_instances(NULL, &iterator));
  CHECK_REFUSED(kova_table_content(NULL, &iterator));
  CHECK_REFUSED(kova_reference_instances(NULL, &iterator));
  CHECK(iterator == kova_sentinel());
  CHECK_REFUSED(kova_table_references(table, NULL));
  CHECK_REFUSED(kova_table_instances(table, NULL));
  CHECK_REFUSED(kova_table_content(table, NULL));
  kova_object* root = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &root));
  CHECK_REFUSED(kova_reference_instances(root, NULL));
  kova_object* object = kova_sentinel();
  CHECK_REFUSED(kova_iterator_next(NULL, &object));
  CHECK(object == kova_sentinel());
  CHECK_STATUS(KOVA_S_OK, kova_table_content(table, &iterator));
  CHECK_REFUSED(kova_iterator_next(iterator, NULL));
  CHECK_INT(0, kova_iterator_count(NULL));
  /* The refused call did not move the iteration. */
  CHECK_ITERATION(iterator, "BRK-2041", "ISO4762-M6x20.1", "ISO4762-M6x20.2");
  kova_iterator_free(iterator);
  kova_iterator_free(NULL);
  kova_object_release(root);
  kova_table_free(table);
}

TEST(null_object_getters) {
  CHECK(kova_object_retain(NULL) == NULL);
  kova_object_release(NULL);
  CHECK_INT(0, kova_object_kind(NULL));
  const char* (*const getters[])(const kova_object*, size_t*) = {
      kova_object_kova_id, kova_object_plexo_id, kova_object_custom_data, kova_object_stamp, kova_instance_ref_id};
  for (size_t i = 0; i < sizeof getters / sizeof getters[0]; ++i) {
    size_t length = 55;
    CHECK(getters[i](NULL, &length) == NULL);
    CHECK_INT(0, length);
    CHECK(getters[i](NULL, NULL) == NULL);
  }
  CHECK_INT(0, kova_object_is_local(NULL));
  CHECK_INT(KOVA_E_INVALIDARG, kova_object_kss_version(NULL));
  CHECK_INT(0, kova_object_stamp_is_from_ce(NULL));
  CHECK_INT(0, kova_object_stamp_has_unset(NULL));
  CHECK_INT(0, kova_reference_instance_count(NULL));
}

TEST(null_object_setters) {
  kova_object* instance = kova_make_instance("K", "P", "R");
  int32_t (*const setters[])(kova_object*, const char*, size_t) = {kova_object_set_kova_id, kova_object_set_plexo_id,
                                                                   kova_object_set_custom_data, kova_object_set_stamp,
                                                                   kova_instance_set_ref_id};
  for (size_t i = 0; i < sizeof setters / sizeof setters[0]; ++i) {
    CHECK_REFUSED(setters[i](NULL, "x", 1));
    CHECK_REFUSED(setters[i](instance, NULL, 1));
    CHECK_REFUSED(setters[i](instance, NULL, KOVA_NUL_TERMINATED));
  }
  CHECK_REFUSED(kova_object_set_kss_version(NULL, 2));
  CHECK_REFUSED(kova_object_set_is_local(NULL, 1));
  /* The refused calls changed nothing. */
  CHECK_STR("K", kova_object_kova_id(instance, NULL));
  CHECK_STR("P", kova_object_plexo_id(instance, NULL));
  CHECK_STR("", kova_object_custom_data(instance, NULL));
  CHECK_STR("inststamp", kova_object_stamp(instance, NULL));
  CHECK_STR("R", kova_instance_ref_id(instance, NULL));
  CHECK_INT(1, kova_object_kss_version(instance));
  /* NULL with length 0 is the empty text. */
  for (size_t i = 0; i < sizeof setters / sizeof setters[0]; ++i) {
    CHECK_STATUS(KOVA_S_OK, setters[i](instance, NULL, 0));
  }
  CHECK_STR("", kova_object_kova_id(instance, NULL));
  CHECK_STR("", kova_object_plexo_id(instance, NULL));
  CHECK_STR("", kova_object_stamp(instance, NULL));
  CHECK_STR("", kova_instance_ref_id(instance, NULL));
  kova_object_release(instance);
}

TEST(null_object_comparisons) {
  kova_object* object = kova_make_reference("K", "P", 0);
  CHECK_INT(0, kova_object_same(NULL, object));
  CHECK_INT(0, kova_object_same(object, NULL));
  CHECK_INT(0, kova_object_same(NULL, NULL));
  CHECK_INT(0, kova_object_shares(NULL, object));
  CHECK_INT(0, kova_object_shares(object, NULL));
  CHECK_INT(0, kova_object_shares(NULL, NULL));
  CHECK_INT(0, kova_object_stamp_equals(NULL, object));
  CHECK_INT(0, kova_object_stamp_equals(object, NULL));
  CHECK_INT(0, kova_object_stamp_equals(NULL, NULL));
  CHECK_INT(0, kova_object_stamp_equals_text(NULL, "refstamp", 8));
  CHECK_INT(0, kova_object_stamp_equals_text(object, NULL, 8));
  CHECK_INT(1, kova_object_stamp_equals_text(object, "refstamp", 8));
  /* The empty stamp equals the empty text, given as NULL and 0. */
  kova_object* empty = kova_instance_new();
  CHECK_INT(1, kova_object_stamp_equals_text(empty, NULL, 0));
  CHECK_INT(0, kova_object_stamp_equals_text(object, NULL, 0));
  kova_object_release(empty);
  kova_object_release(object);
}

TEST(null_reference_instance_arguments) {
  kova_object* reference = reference_object();
  kova_object* instance = instance_object();
  CHECK_REFUSED(kova_reference_add_instance(NULL, instance));
  CHECK_REFUSED(kova_reference_add_instance(reference, NULL));
  CHECK_REFUSED(kova_reference_remove_instance(NULL, instance));
  CHECK_REFUSED(kova_reference_remove_instance(reference, NULL));
  CHECK_INT(0, kova_reference_instance_count(reference));
  kova_object_release(reference);
  kova_object_release(instance);
}

TEST(null_stamp_text_arguments) {
  char* out = kova_sentinel();
  size_t out_length = 8;
  CHECK_REFUSED(kova_stamp_with_version(NULL, 3, 1, &out, &out_length));
  CHECK_REFUSED(kova_stamp_with_version("abc", 3, 1, NULL, &out_length));
  CHECK_REFUSED(kova_stamp_without_version(NULL, 3, &out, &out_length));
  CHECK_REFUSED(kova_stamp_without_version("abc", 3, NULL, &out_length));
  CHECK_REFUSED(kova_stamp_add_ce_prefix(NULL, 3, &out, &out_length));
  CHECK_REFUSED(kova_stamp_add_ce_prefix("abc", 3, NULL, &out_length));
  CHECK_REFUSED(kova_stamp_from_ce(NULL, 3, &out, &out_length));
  CHECK_REFUSED(kova_stamp_from_ce("abc", 3, NULL, &out_length));
  CHECK(out == kova_sentinel());
  CHECK_INT(8, out_length);
  CHECK_INT(-1, kova_stamp_version(NULL, 0));
  CHECK_INT(-1, kova_stamp_version(NULL, 3));
  CHECK_INT(0, kova_stamp_has_ce_prefix(NULL, 0));
  CHECK_INT(0, kova_stamp_has_ce_prefix(NULL, 6));
  /* NULL with length 0 is the empty text. */
  CHECK_STATUS(KOVA_S_OK, kova_stamp_with_version(NULL, 0, 2, &out, &out_length));
  CHECK_TEXT("V2:", out, out_length);
  kova_free(out);
  CHECK_STATUS(KOVA_S_OK, kova_stamp_add_ce_prefix(NULL, 0, &out, &out_length));
  CHECK_TEXT("V0KSS:", out, out_length);
  kova_free(out);
  CHECK_STATUS(KOVA_S_OK, kova_stamp_without_version(NULL, 0, &out, &out_length));
  CHECK_TEXT("", out, out_length);
  kova_free(out);
}

TEST(null_attribute_arguments) {
  kova_attributes* attributes = kova_attributes_new();
  kova_attributes_free(NULL);
  CHECK_INT(0, kova_attributes_count(NULL));
  CHECK_REFUSED(kova_attributes_set_string(NULL, "n", 1, "v", 1));
  CHECK_REFUSED(kova_attributes_set_string(attributes, NULL, 1, "v", 1));
  CHECK_REFUSED(kova_attributes_set_string(attributes, "n", 1, NULL, 1));
  CHECK_REFUSED(kova_attributes_set_integer(NULL, "n", 1, 1));
  CHECK_REFUSED(kova_attributes_set_integer(attributes, NULL, 1, 1));
  CHECK_REFUSED(kova_attributes_set_real(NULL, "n", 1, 1.5));
  CHECK_REFUSED(kova_attributes_set_real(attributes, NULL, 1, 1.5));
  CHECK_REFUSED(kova_attributes_set_boolean(NULL, "n", 1, 1));
  CHECK_REFUSED(kova_attributes_set_boolean(attributes, NULL, 1, 1));
  CHECK_REFUSED(kova_attributes_set_time(NULL, "n", 1, 1));
  CHECK_REFUSED(kova_attributes_set_time(attributes, NULL, 1, 1));
  CHECK_REFUSED(kova_attributes_set_unset(NULL, "n", 1, KOVA_VALUE_STRING));
  CHECK_REFUSED(kova_attributes_set_unset(attributes, NULL, 1, KOVA_VALUE_STRING));
  const char* const words[] = {"a", "b"};
  const size_t lengths[] = {1, 1};
  const int32_t integers[] = {1, 2};
  const double reals[] = {1.5, 2.5};
  const int booleans[] = {1, 0};
  const int64_t times[] = {1, 2};
  CHECK_REFUSED(kova_attributes_set_string_list(NULL, "n", 1, words, lengths, 2));
  CHECK_REFUSED(kova_attributes_set_string_list(attributes, NULL, 1, words, lengths, 2));
  CHECK_REFUSED(kova_attributes_set_string_list(attributes, "n", 1, NULL, lengths, 2));
  CHECK_REFUSED(kova_attributes_set_string_list(attributes, "n", 1, NULL, NULL, 2));
  CHECK_REFUSED(kova_attributes_set_integer_list(NULL, "n", 1, integers, 2));
  CHECK_REFUSED(kova_attributes_set_integer_list(attributes, NULL, 1, integers, 2));
  CHECK_REFUSED(kova_attributes_set_integer_list(attributes, "n", 1, NULL, 2));
  CHECK_REFUSED(kova_attributes_set_real_list(NULL, "n", 1, reals, 2));
  CHECK_REFUSED(kova_attributes_set_real_list(attributes, NULL, 1, reals, 2));
  CHECK_REFUSED(kova_attributes_set_real_list(attributes, "n", 1, NULL, 2));
  CHECK_REFUSED(kova_attributes_set_boolean_list(NULL, "n", 1, booleans, 2));
  CHECK_REFUSED(kova_attributes_set_boolean_list(attributes, NULL, 1, booleans, 2));
  CHECK_REFUSED(kova_attributes_set_boolean_list(attributes, "n", 1, NULL, 2));
  CHECK_REFUSED(kova_attributes_set_time_list(NULL, "n", 1, times, 2));
  CHECK_REFUSED(kova_attributes_set_time_list(attributes, NULL, 1, times, 2));
  CHECK_REFUSED(kova_attributes_set_time_list(attributes, "n", 1, NULL, 2));
  /* A NULL element: refused when it would be read up to a NUL or for a length, the empty text
   * for a length of 0. */
  const char* const with_null[] = {"a", NULL};
  const size_t null_lengths[] = {1, 3};
  const size_t zero_lengths[] = {1, 0};
  CHECK_REFUSED(kova_attributes_set_string_list(attributes, "n", 1, with_null, NULL, 2));
  CHECK_REFUSED(kova_attributes_set_string_list(attributes, "n", 1, with_null, null_lengths, 2));
  CHECK_INT(0, kova_attributes_count(attributes));
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string_list(attributes, "n", 1, with_null, zero_lengths, 2));
  /* NULL texts with length 0: the empty value. */
  CHECK_STATUS(KOVA_S_OK, kova_attributes_set_string(attributes, "v", 1, NULL, 0));
  CHECK_INT(2, kova_attributes_count(attributes));
  kova_attributes_free(attributes);
}

TEST(null_stamp_compute_arguments) {
  kova_attributes* attributes = kova_attributes_new();
  char* stamp = kova_sentinel();
  size_t length = 9;
  CHECK_REFUSED(kova_stamp_compute(NULL, &stamp, &length));
  CHECK_REFUSED(kova_stamp_compute(attributes, NULL, &length));
  CHECK(stamp == kova_sentinel());
  CHECK_INT(9, length);
  kova_attributes_free(attributes);
}

TEST(null_envelope_arguments) {
  char* out = kova_sentinel();
  size_t out_length = 3;
  CHECK_REFUSED(kova_envelope_pack(NULL, 4, &out, &out_length));
  CHECK_REFUSED(kova_envelope_pack("text", 4, NULL, &out_length));
  CHECK_REFUSED(kova_envelope_unpack(NULL, 4, &out, &out_length));
  CHECK_REFUSED(kova_envelope_unpack("V12:1:eJwDAAAAAAE=", KOVA_NUL_TERMINATED, NULL, &out_length));
  CHECK(out == kova_sentinel());
  CHECK_INT(3, out_length);
  /* NULL with length 0: the empty text, which packs with size 0 and is no envelope to unpack. */
  CHECK_STATUS(KOVA_S_OK, kova_envelope_pack(NULL, 0, &out, &out_length));
  CHECK(strncmp(out, "V12:0:", 6) == 0);
  kova_free(out);
  out = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_envelope_unpack(NULL, 0, &out, &out_length));
  CHECK(out == kova_sentinel());
}

/* ---- Lengths --------------------------------------------------------------------------------- */

/* The v8 example document followed by NUL bytes and garbage; the document's length in *text_length. */
static char* document_with_garbage(size_t* text_length, size_t* buffer_length) {
  char* text = kova_example_document("v8_gearbox.json", text_length);
  static const char tail[] = "\0\0\0\0garbage{]\xFF";
  const size_t tail_length = sizeof tail - 1;
  char* buffer = malloc(*text_length + tail_length);
  CHECK(buffer != NULL);
  memcpy(buffer, text, *text_length);
  memcpy(buffer + *text_length, tail, tail_length);
  *buffer_length = *text_length + tail_length;
  free(text);
  return buffer;
}

TEST(length_longer_than_the_text) {
  size_t text_length = 0;
  size_t buffer_length = 0;
  char* buffer = document_with_garbage(&text_length, &buffer_length);
  kova_table* table = kova_table_new();
  CHECK_FAILS(kova_table_read(table, buffer, buffer_length));
  CHECK_FAILS(kova_table_read(table, buffer, text_length + 1));
  CHECK_INT(0, kova_table_reference_count(table));
  /* The exact length reads the document. */
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, buffer, text_length));
  CHECK_INT(3, kova_table_reference_count(table));
  free(buffer);
  kova_table_free(table);
}

TEST(length_shorter_than_the_text) {
  size_t length = 0;
  char* text = kova_example_document("v8_gearbox.json", &length);
  kova_table* table = kova_table_new();
  CHECK_FAILS(kova_table_read(table, text, length / 2));
  CHECK_FAILS(kova_table_read(table, text, length - 2));
  CHECK_FAILS(kova_table_read(table, text, 1));
  CHECK_INT(0, kova_table_reference_count(table));
  CHECK_INT(CURRENT_VERSION, kova_table_version(table));
  free(text);
  kova_table_free(table);
}

TEST(nul_terminated_reads_up_to_the_first_nul) {
  size_t text_length = 0;
  size_t buffer_length = 0;
  char* buffer = document_with_garbage(&text_length, &buffer_length);
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, buffer, KOVA_NUL_TERMINATED));
  CHECK_INT(3, kova_table_reference_count(table));
  CHECK_INT(4, kova_table_instance_count(table));
  free(buffer);
  kova_table_free(table);
}

TEST(texts_without_a_terminating_nul) {
  /* Buffers of exactly the given length: nothing past them is read. */
  size_t length = 0;
  char* text = kova_example_document("v10_pump.json", &length);
  char* exact = malloc(length);
  CHECK(exact != NULL);
  memcpy(exact, text, length);
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, exact, length));
  CHECK_INT(2, kova_table_reference_count(table));
  static const char id_text[7] = "PMP-500"; /* seven characters, no NUL */
  char* id = malloc(sizeof id_text);
  CHECK(id != NULL);
  memcpy(id, id_text, sizeof id_text);
  kova_object* found = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, id, 7, &found));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(found, id, 7));
  CHECK_STR("PMP-500", kova_object_custom_data(found, NULL));
  CHECK_INT(0, kova_object_stamp_equals_text(found, exact, 0));
  char* envelope = NULL;
  size_t envelope_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_pack(exact, length, &envelope, &envelope_length));
  char* opened = NULL;
  size_t opened_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_unpack(envelope, envelope_length, &opened, &opened_length));
  CHECK_MEM(text, length, opened, opened_length);
  char* stamp = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_with_version(id, 7, 4, &stamp, NULL));
  CHECK_STR("V4:PMP-500", stamp);
  kova_free(stamp);
  kova_free(opened);
  kova_free(envelope);
  kova_object_release(found);
  free(id);
  free(exact);
  free(text);
  kova_table_free(table);
}

TEST(null_text_with_length_zero_is_the_empty_text) {
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_read(table, NULL, 0));
  CHECK_MESSAGES("KOVA JSON EMPTY OR INVALID\n");
  CHECK_STATUS(KOVA_E_FAIL, kova_table_read(table, "", 0));
  CHECK_MESSAGES("KOVA JSON EMPTY OR INVALID\n");
  CHECK_INT(CURRENT_VERSION, kova_table_version(table));
  kova_table_free(table);
}

TEST(nul_bytes_inside_ids) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("x", "P", 1);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(reference, "a\0b", 3));
  size_t length = 0;
  const char* id = kova_object_kova_id(reference, &length);
  CHECK_MEM("a\0b", 3, id, length);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  kova_object* found = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "a", 1, &found));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "a\0b", KOVA_NUL_TERMINATED, &found));
  CHECK(found == kova_sentinel());
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, "a\0b", 3, &found));
  CHECK_INT(1, kova_object_shares(found, reference));
  kova_object_release(found);
  /* Written and read back, the id keeps its NUL byte. */
  char* text = NULL;
  size_t text_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &text, &text_length));
  kova_table* copy = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_read(copy, text, text_length));
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(copy, "a\0b", 3, &found));
  kova_object_release(found);
  kova_free(text);
  kova_table_free(copy);
  kova_object_release(reference);
  kova_table_free(table);
}

/* ---- Invalid UTF-8 --------------------------------------------------------------------------- */

TEST(invalid_utf8_ids_hold_replacement_characters) {
  kova_object* object = kova_reference_new();
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(object,
                                                  "a\xFF"
                                                  "b",
                                                  3));
  size_t length = 0;
  const char* id = kova_object_kova_id(object, &length);
  CHECK_MEM(
      "a\xEF\xBF\xBD"
      "b",
      5, id, length);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_plexo_id(object, "\x80", 1));
  const char* plexo = kova_object_plexo_id(object, &length);
  CHECK_MEM("\xEF\xBF\xBD", 3, plexo, length);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(object, "V2:s\xFE", KOVA_NUL_TERMINATED));
  const char* stamp = kova_object_stamp(object, &length);
  CHECK_MEM("s\xEF\xBF\xBD", 4, stamp, length);
  CHECK_INT(2, kova_object_kss_version(object));
  /* Valid text is kept as it is. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(object, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x94\xA7", 9));
  const char* custom = kova_object_custom_data(object, &length);
  CHECK_MEM("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x94\xA7", 9, custom, length);
  kova_object_release(object);
}

TEST(invalid_utf8_ids_are_found_alike) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("x", "P", 1);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(reference, "R\xFF", 2));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  kova_object* found = NULL;
  /* The same bytes, and the replacement character itself, name the same id. */
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, "R\xFF", 2, &found));
  kova_object_release(found);
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, "R\xEF\xBF\xBD", 4, &found));
  kova_object_release(found);
  kova_object_release(reference);
  kova_table_free(table);
}

TEST(invalid_utf8_in_a_document) {
  const char document[] =
      "{\"version\":12,\"References\":[{\"kOVAId\":\"R\xFF\",\"PlexoId\":\"P\",\"IsLocal\":false,"
      "\"KOVASynchroStamp\":\"V1:s\"}]}";
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, document, sizeof document - 1));
  kova_object* root = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &root));
  CHECK_KOVA_ID("R\xEF\xBF\xBD", root);
  kova_object_release(root);
  kova_table_free(table);
}

TEST(invalid_utf8_in_stamp_texts_and_envelopes) {
  char* out = NULL;
  size_t out_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_stamp_with_version("\xFF", 1, 3, &out, &out_length));
  CHECK_MEM("V3:\xEF\xBF\xBD", 6, out, out_length);
  kova_free(out);
  /* The envelope holds the replaced text: three bytes. */
  CHECK_STATUS(KOVA_S_OK, kova_envelope_pack("\xFF", 1, &out, &out_length));
  CHECK(strncmp(out, "V12:3:", 6) == 0);
  char* opened = NULL;
  size_t opened_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_unpack(out, out_length, &opened, &opened_length));
  CHECK_MEM("\xEF\xBF\xBD", 3, opened, opened_length);
  kova_free(opened);
  kova_free(out);
}

/* ---- Hostile documents ----------------------------------------------------------------------- */

enum outcome { READ, REFUSED, BOUNDS, UNEXPECTED };

typedef struct {
  const char* file;
  enum outcome outcome;
} hostile_case;

static const hostile_case hostile_cases[] = {
    {"bom_inside.json", REFUSED},
    {"bom_only.json", REFUSED},
    {"bom_then_blank.json", REFUSED},
    {"bom_twice.json", REFUSED},
    {"bom_utf16le.json", REFUSED},
    {"duplicate_islocal_last_string.json", REFUSED},
    {"duplicate_kovaid.json", READ},
    {"duplicate_references.json", READ},
    {"duplicate_version.json", READ},
    {"duplicate_version_last_bad.json", REFUSED},
    {"escape_lone_surrogate.json", REFUSED},
    {"instances_null.json", REFUSED},
    {"islocal_number.json", REFUSED},
    {"nan_version.json", REFUSED},
    {"nul_after.json", REFUSED},
    {"nul_escaped_in_id.json", READ},
    {"nul_first.json", REFUSED},
    {"nul_in_key.json", REFUSED},
    {"nul_in_value.json", REFUSED},
    {"one_digit_version_empty_size.txt", UNEXPECTED},
    {"payload_base64_not_zlib.txt", REFUSED},
    {"payload_digits.txt", REFUSED},
    {"payload_not_base64.txt", REFUSED},
    {"prefix_only.txt", REFUSED},
    {"references_null.json", REFUSED},
    {"references_string.json", REFUSED},
    {"root_null.json", REFUSED},
    {"root_number.json", REFUSED},
    {"root_string.json", REFUSED},
    {"run_in_key.json", UNEXPECTED},
    {"run_in_value.json", REFUSED},
    {"single_quotes.json", REFUSED},
    {"size_2147483648.txt", BOUNDS},
    {"size_huge.txt", BOUNDS},
    {"size_leading_zeros_zero.txt", REFUSED},
    {"trailing_comma.json", REFUSED},
    {"two_documents.json", REFUSED},
    {"utf8_key_bad_byte.json", REFUSED},
    {"utf8_stamp_bad_byte.json", READ},
    {"utf8_value_bad_byte.json", READ},
    {"utf8_value_cut_sequence.json", READ},
    {"utf8_value_lone_continuation.json", READ},
    {"utf8_value_overlong.json", READ},
    {"utf8_value_surrogate.json", READ},
    {"utf8_version_key_bad_byte.json", REFUSED},
    {"v6_references_null.json", REFUSED},
    {"version_2147483648.json", REFUSED},
    {"version_exponent.json", REFUSED},
    {"version_huge_exponent.json", REFUSED},
    {"version_leading_zero.json", REFUSED},
    {"version_minus_zero.json", REFUSED},
    {"version_negative.json", REFUSED},
    {"version_null.json", REFUSED},
    {"version_true.json", REFUSED},
};

TEST(hostile_documents_give_statuses) {
  for (size_t i = 0; i < sizeof hostile_cases / sizeof hostile_cases[0]; ++i) {
    const hostile_case* c = &hostile_cases[i];
    size_t length = 0;
    char* text = kova_read_file(KOVA_TEST_DOCUMENTS "/../hostile", c->file, &length);
    kova_table* table = kova_table_new();
    const int32_t status = kova_table_read(table, text, length);
    const char* messages = kova_last_messages();
    int ok = 1;
    switch (c->outcome) {
      case READ: ok = status == KOVA_S_OK; break;
      case REFUSED: ok = status < 0 && status != KOVA_E_UNEXPECTED && status != KOVA_E_BOUNDS; break;
      case BOUNDS:
      case UNEXPECTED:
        /* An error raised inside: its status and text, the table untouched. */
        ok = status == (c->outcome == BOUNDS ? KOVA_E_BOUNDS : KOVA_E_UNEXPECTED) && messages[0] != '\0' &&
             kova_table_reference_count(table) == 0 && kova_table_version(table) == CURRENT_VERSION;
        break;
    }
    if (!ok) {
      fprintf(stderr, "%s: status %ld (0x%08lX), %zu references\n", c->file, (long)status,
              (unsigned long)(uint32_t)status, kova_table_reference_count(table));
      kova_check_print_messages();
    }
    CHECK(ok);
    kova_table_free(table);
    free(text);
  }
}

TEST(nul_escaped_in_a_document_id) {
  size_t length = 0;
  char* text = kova_read_file(KOVA_TEST_DOCUMENTS "/../hostile", "nul_escaped_in_id.json", &length);
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, text, length));
  kova_object* root = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &root));
  /* The id "R\u00001" holds a NUL byte; the getter gives all three bytes. */
  size_t id_length = 0;
  const char* id = kova_object_kova_id(root, &id_length);
  CHECK_MEM(
      "R\0"
      "1",
      3, id, id_length);
  CHECK(id[3] == '\0');
  kova_object_release(root);
  kova_table_free(table);
  free(text);
}

TEST(deeply_nested_document) {
  const size_t depth = 100000;
  const char head[] = "{\"version\":12,\"References\":";
  const size_t head_length = sizeof head - 1;
  char* text = malloc(head_length + 2 * depth + 1);
  CHECK(text != NULL);
  memcpy(text, head, head_length);
  memset(text + head_length, '[', depth);
  memset(text + head_length + depth, ']', depth);
  text[head_length + 2 * depth] = '}';
  kova_table* table = kova_table_new();
  CHECK_FAILS(kova_table_read(table, text, head_length + 2 * depth + 1));
  /* Unclosed. */
  CHECK_FAILS(kova_table_read(table, text, head_length + depth));
  CHECK_INT(0, kova_table_reference_count(table));
  free(text);
  kova_table_free(table);
}

/* ---- Handles after their table is gone ------------------------------------------------------- */

TEST(object_outlives_its_table) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* gearbox = NULL;
  kova_object* gear = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &gearbox));
  CHECK_STATUS(KOVA_S_OK, kova_table_find_instance_by_plexo_id(table, "ins-02f86720c6bfa270", 20, &gear));
  kova_table_free(table);
  /* Fields still readable. */
  CHECK_KOVA_ID("GBX-100", gearbox);
  CHECK_STR("prd-4bdb6e725c26c314", kova_object_plexo_id(gearbox, NULL));
  CHECK_STR("TpuyJsEsVRzXg6LonX8yG6pRY6+PPtbaqmI7y+JEakA=", kova_object_stamp(gearbox, NULL));
  CHECK_INT(2, kova_object_kss_version(gearbox));
  CHECK_STR("mirrored", kova_object_custom_data(gear, NULL));
  CHECK_STR("GR-311", kova_instance_ref_id(gear, NULL));
  /* The reference's instances are still there, and shared. */
  CHECK_INT(3, kova_reference_instance_count(gearbox));
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(gearbox, &iterator));
  CHECK_ITERATION(iterator, "SHF-210.1", "GR-311.1", "GR-311.2");
  kova_iterator_free(iterator);
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(gearbox, &iterator));
  kova_object* first = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &first));
  kova_object* second = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &second));
  kova_object* third = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &third));
  CHECK_INT(1, kova_object_shares(third, gear));
  kova_object_release(first);
  kova_object_release(second);
  kova_object_release(third);
  kova_iterator_free(iterator);
  /* And changeable. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(gearbox, "GBX-200", 7));
  CHECK_KOVA_ID("GBX-200", gearbox);
  CHECK_STATUS(KOVA_S_OK, kova_reference_remove_instance(gearbox, gear));
  CHECK_INT(2, kova_reference_instance_count(gearbox));
  kova_object_release(gear);
  kova_object_release(gearbox);
}

TEST(object_moves_into_another_table) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v10_pump.json", KOVA_S_OK);
  kova_object* pump = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &pump));
  kova_table_free(table);
  kova_table* other = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(other, pump));
  CHECK_INT(1, kova_table_reference_count(other));
  CHECK_INT(2, kova_table_instance_count(other));
  kova_object* found = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_instance_by_kova_id(other, "IMP-510.1", 9, &found));
  kova_object_release(found);
  kova_object_release(pump);
  kova_table_free(other);
}

static const kova_test_case cases[] = {
    TEST_CASE(null_library_arguments),
    TEST_CASE(null_table_arguments),
    TEST_CASE(null_lookup_arguments),
    TEST_CASE(null_iteration_arguments),
    TEST_CASE(null_object_getters),
    TEST_CASE(null_object_setters),
    TEST_CASE(null_object_comparisons),
    TEST_CASE(null_reference_instance_arguments),
    TEST_CASE(null_stamp_text_arguments),
    TEST_CASE(null_attribute_arguments),
    TEST_CASE(null_stamp_compute_arguments),
    TEST_CASE(null_envelope_arguments),
    TEST_CASE(length_longer_than_the_text),
    TEST_CASE(length_shorter_than_the_text),
    TEST_CASE(nul_terminated_reads_up_to_the_first_nul),
    TEST_CASE(texts_without_a_terminating_nul),
    TEST_CASE(null_text_with_length_zero_is_the_empty_text),
    TEST_CASE(nul_bytes_inside_ids),
    TEST_CASE(invalid_utf8_ids_hold_replacement_characters),
    TEST_CASE(invalid_utf8_ids_are_found_alike),
    TEST_CASE(invalid_utf8_in_a_document),
    TEST_CASE(invalid_utf8_in_stamp_texts_and_envelopes),
    TEST_CASE(hostile_documents_give_statuses),
    TEST_CASE(nul_escaped_in_a_document_id),
    TEST_CASE(deeply_nested_document),
    TEST_CASE(object_outlives_its_table),
    TEST_CASE(object_moves_into_another_table),
};

RUN_TESTS(cases)
