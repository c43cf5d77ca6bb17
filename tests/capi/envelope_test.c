/* The compressed envelope: "V<current version>:<size in UTF-8 bytes>:" and the base64 of the zlib
 * stream. The current version is 12 here ("RollBackMappingVersion" unset). */
#include "check.h"

/* Packs a text; the caller frees the envelope with kova_free. */
static char* pack(const char* text, size_t length, size_t* envelope_length) {
  char* envelope = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_pack(text, length, &envelope, envelope_length));
  CHECK(envelope != NULL);
  CHECK_INT(strlen(envelope), *envelope_length);
  return envelope;
}

static void check_round_trip(const char* text, size_t length) {
  size_t envelope_length = 0;
  char* envelope = pack(text, length, &envelope_length);
  char* opened = NULL;
  size_t opened_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_unpack(envelope, envelope_length, &opened, &opened_length));
  CHECK_MESSAGES("");
  CHECK_MEM(text, length, opened, opened_length);
  CHECK(opened[opened_length] == '\0');
  kova_free(opened);
  kova_free(envelope);
}

/* An envelope that must not open: the status, and the out arguments untouched. */
static int32_t unpack_fails(const char* envelope, size_t length) {
  char* out = kova_sentinel();
  size_t out_length = 4242;
  const int32_t status = kova_envelope_unpack(envelope, length, &out, &out_length);
  CHECK(status < 0);
  CHECK(out == kova_sentinel());
  CHECK_INT(4242, out_length);
  return status;
}

TEST(pack_prefix) {
  size_t length = 0;
  char* envelope = pack("hello", 5, &length);
  CHECK(strncmp(envelope, "V12:5:", 6) == 0);
  CHECK(length > 6);
  CHECK_MESSAGES("");
  kova_free(envelope);
}

TEST(pack_size_counts_utf8_bytes) {
  size_t length = 0;
  /* "é€": two characters, five bytes. */
  char* envelope = pack("\xC3\xA9\xE2\x82\xAC", 5, &length);
  CHECK(strncmp(envelope, "V12:5:", 6) == 0);
  kova_free(envelope);
}

TEST(pack_payload_is_base64) {
  size_t length = 0;
  char* envelope = pack("not a mapping document\n", KOVA_NUL_TERMINATED, &length);
  CHECK(strncmp(envelope, "V12:23:", 7) == 0);
  for (size_t i = 7; i < length; ++i) {
    const char c = envelope[i];
    CHECK((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' ||
          c == '=');
  }
  CHECK((length - 7) % 4 == 0);
  kova_free(envelope);
}

TEST(round_trip_document) {
  size_t length = 0;
  char* text = kova_example_document("v12_conveyor.json", &length);
  check_round_trip(text, length);
  free(text);
}

TEST(round_trip_texts) {
  check_round_trip("x", 1);
  check_round_trip("a\0b\0c", 5);
  const char* non_ascii = "Motortr\xC3\xA4ger \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x94\xA7";
  CHECK(strlen(non_ascii) == 24);
  check_round_trip(non_ascii, strlen(non_ascii));
  /* A long text of repeated lines. */
  const size_t size = 200000;
  char* big = malloc(size);
  CHECK(big != NULL);
  for (size_t i = 0; i < size; ++i) big[i] = (char)('a' + (i * 7 + i / 13) % 26);
  check_round_trip(big, size);
  free(big);
}

TEST(unpack_example_envelope) {
  size_t envelope_length = 0;
  size_t json_length = 0;
  char* envelope = kova_example_document("v12_conveyor.envelope", &envelope_length);
  char* json = kova_example_document("v12_conveyor.json", &json_length);
  char* opened = NULL;
  size_t opened_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_unpack(envelope, envelope_length, &opened, &opened_length));
  CHECK_MEM(json, json_length, opened, opened_length);
  kova_free(opened);
  free(envelope);
  free(json);
}

TEST(unpack_plain_text_fails) {
  CHECK_INT(KOVA_E_FAIL, unpack_fails("{\"version\": 12, \"References\": []}", KOVA_NUL_TERMINATED));
  CHECK_INT(KOVA_E_FAIL, unpack_fails("plain text", 10));
  CHECK_INT(KOVA_E_FAIL, unpack_fails("", 0));
  CHECK_INT(KOVA_E_FAIL, unpack_fails("V12:", 4));
  CHECK_INT(KOVA_E_FAIL, unpack_fails("V12:abc:eJwDAAAAAAE=", KOVA_NUL_TERMINATED));
}

TEST(unpack_size_zero_fails) {
  CHECK_INT(KOVA_E_FAIL, unpack_fails("V12:0:xyz", 9));
  /* The envelope of the empty text holds size 0, which is no envelope. */
  size_t length = 0;
  char* envelope = pack("", 0, &length);
  CHECK(strncmp(envelope, "V12:0:", 6) == 0);
  CHECK_INT(KOVA_E_FAIL, unpack_fails(envelope, length));
  kova_free(envelope);
}

TEST(unpack_size_beyond_32_bits_fails) {
  const char* const envelopes[] = {
      "V12:2147483648:eJwDAAAAAAE=", "V12:99999999999:eJwDAAAAAAE=", "V12:99999999999999999999999999:eJwDAAAAAAE="};
  for (size_t i = 0; i < sizeof envelopes / sizeof envelopes[0]; ++i) {
    CHECK_INT(KOVA_E_BOUNDS, unpack_fails(envelopes[i], KOVA_NUL_TERMINATED));
    /* The error's text. */
    const char* messages = kova_last_messages();
    CHECK(messages[0] != '\0');
    CHECK(messages[strlen(messages) - 1] == '\n');
  }
}

TEST(unpack_unreadable_size_fails) {
  /* A one-digit version and a one-digit size: no size digits where the size is read. */
  unpack_fails("V9:1:eJwDAAAAAAE=", KOVA_NUL_TERMINATED);
  CHECK(kova_last_messages()[0] != '\0');
}

TEST(unpack_bad_data) {
  /* base64 of "not a zlib stream": decodes, but does not decompress. */
  CHECK_INT(KOVA_ZANZ_E_BADDATA, unpack_fails("V12:64:bm90IGEgemxpYiBzdHJlYW0=", KOVA_NUL_TERMINATED));
}

TEST(unpack_size_smaller_than_the_text) {
  size_t length = 0;
  char* text = kova_example_document("v12_conveyor.json", &length);
  size_t envelope_length = 0;
  char* envelope = pack(text, length, &envelope_length);
  /* "V12:2144:" becomes "V12:1000:": the text no longer fits. */
  char prefix[32];
  const int prefix_length = snprintf(prefix, sizeof prefix, "V12:%zu:", length);
  CHECK(prefix_length == 9);
  CHECK(strncmp(envelope, prefix, 9) == 0);
  memcpy(envelope + 4, "1000", 4);
  CHECK_INT(KOVA_ZANZ_E_INSUFFICIENTBUFFER, unpack_fails(envelope, envelope_length));
  kova_free(envelope);
  free(text);
}

TEST(unpack_payload_not_base64) {
  unpack_fails("V12:10:a!bc", KOVA_NUL_TERMINATED);
  /* A line break after the payload is not base64 either. */
  size_t length = 0;
  char* envelope = kova_example_document("v12_conveyor.envelope", &length);
  char* with_newline = malloc(length + 2);
  CHECK(with_newline != NULL);
  memcpy(with_newline, envelope, length);
  with_newline[length] = '\n';
  with_newline[length + 1] = '\0';
  unpack_fails(with_newline, length + 1);
  free(with_newline);
  free(envelope);
}

TEST(unpack_truncated_payload) {
  size_t length = 0;
  char* envelope = kova_example_document("v12_conveyor.envelope", &length);
  unpack_fails(envelope, length / 2);
  unpack_fails(envelope, length - 4);
  free(envelope);
}

TEST(unpack_reads_exactly_length_bytes) {
  size_t length = 0;
  char* envelope = pack("exact", 5, &length);
  /* The envelope followed by bytes that are not part of it. */
  char* longer = malloc(length + 8);
  CHECK(longer != NULL);
  memcpy(longer, envelope, length);
  memcpy(longer + length, "!!!!!!!", 8);
  char* opened = NULL;
  size_t opened_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_unpack(longer, length, &opened, &opened_length));
  CHECK_MEM("exact", 5, opened, opened_length);
  kova_free(opened);
  /* Taken with the extra bytes, the payload is no longer base64. */
  unpack_fails(longer, length + 7);
  free(longer);
  kova_free(envelope);
}

TEST(unpack_without_out_length) {
  size_t length = 0;
  char* envelope = pack("no length", 9, &length);
  char* opened = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_unpack(envelope, length, &opened, NULL));
  CHECK_STR("no length", opened);
  kova_free(opened);
  kova_free(envelope);
}

TEST(table_reads_what_pack_gives) {
  size_t length = 0;
  char* text = kova_example_document("v10_pump.json", &length);
  size_t envelope_length = 0;
  char* envelope = pack(text, length, &envelope_length);
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, envelope, envelope_length));
  CHECK_INT(2, kova_table_reference_count(table));
  CHECK_INT(2, kova_table_instance_count(table));
  CHECK_INT(10, kova_table_version(table));
  kova_table_free(table);
  kova_free(envelope);
  free(text);
}

static const kova_test_case cases[] = {
    TEST_CASE(pack_prefix),
    TEST_CASE(pack_size_counts_utf8_bytes),
    TEST_CASE(pack_payload_is_base64),
    TEST_CASE(round_trip_document),
    TEST_CASE(round_trip_texts),
    TEST_CASE(unpack_example_envelope),
    TEST_CASE(unpack_plain_text_fails),
    TEST_CASE(unpack_size_zero_fails),
    TEST_CASE(unpack_size_beyond_32_bits_fails),
    TEST_CASE(unpack_unreadable_size_fails),
    TEST_CASE(unpack_bad_data),
    TEST_CASE(unpack_size_smaller_than_the_text),
    TEST_CASE(unpack_payload_not_base64),
    TEST_CASE(unpack_truncated_payload),
    TEST_CASE(unpack_reads_exactly_length_bytes),
    TEST_CASE(unpack_without_out_length),
    TEST_CASE(table_reads_what_pack_gives),
};

RUN_TESTS(cases)
