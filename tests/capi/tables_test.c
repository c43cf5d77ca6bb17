/* Mapping tables: making, clearing, reading documents of every version (plain and enveloped, and
 * the refused ones), writing, counts, version, adding and removing, look-ups and the root. */
#include "check.h"

/* The current document version: the environment of these tests has "RollBackMappingVersion"
 * unset. */
#define CURRENT_VERSION 12

/* Stamps derived from CE stamps: base64 of the SHA-256 digest of "cestamp" followed by the CE
 * stamp (printf %s "cestampCESv1(x'01')" | openssl dgst -sha256 -binary | base64). */
static const char kCE01[] = "Q9Qo/l/ljUEVerC0NCbRlwd3gDfRfthn7/rGE6iarYQ=";
static const char kCE02[] = "/WkxL0AIpVJWBclTs0LJIg/yJKz3yJUGQVTwNFAdjhM=";

/* Finds an object by kOVA id (reference or instance), which must be there. */
static kova_object* find(kova_table* table, const char* kova_id) {
  kova_object* object = NULL;
  if (kova_table_find_reference_by_kova_id(table, kova_id, KOVA_NUL_TERMINATED, &object) != KOVA_S_OK) {
    CHECK_STATUS(KOVA_S_OK, kova_table_find_instance_by_kova_id(table, kova_id, KOVA_NUL_TERMINATED, &object));
  }
  CHECK(object != NULL);
  return object;
}

/* Every field of one object. */
static void check_object(kova_table* table, const char* kova_id, int kind, const char* plexo_id, const char* stamp,
                         int32_t kss_version, int is_local, const char* custom_data, const char* ref_id) {
  kova_object* object = find(table, kova_id);
  size_t length = 0;
  CHECK_INT(kind, kova_object_kind(object));
  const char* text = kova_object_plexo_id(object, &length);
  CHECK_MEM(plexo_id, strlen(plexo_id), text, length);
  text = kova_object_stamp(object, &length);
  CHECK_MEM(stamp, strlen(stamp), text, length);
  CHECK_INT(kss_version, kova_object_kss_version(object));
  CHECK_INT(is_local, kova_object_is_local(object));
  text = kova_object_custom_data(object, &length);
  CHECK_MEM(custom_data, strlen(custom_data), text, length);
  text = kova_instance_ref_id(object, &length);
  if (ref_id == NULL) {
    CHECK(text == NULL);
  } else {
    CHECK_MEM(ref_id, strlen(ref_id), text, length);
  }
  kova_object_release(object);
}

static void check_root(kova_table* table, const char* kova_id) {
  CHECK_INT(1, kova_table_has_root(table));
  kova_object* root = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &root));
  CHECK_KOVA_ID(kova_id, root);
  CHECK_INT(KOVA_REFERENCE, kova_object_kind(root));
  CHECK_INT(0, kova_object_is_local(root));
  kova_object_release(root);
}

static void check_counts(kova_table* table, size_t references, size_t instances, int32_t version) {
  CHECK_INT(references, kova_table_reference_count(table));
  CHECK_INT(instances, kova_table_instance_count(table));
  CHECK_INT(version, kova_table_version(table));
}

/* Every object of two tables alike, in document order. */
static void check_same_tables(kova_table* a, kova_table* b) {
  CHECK_INT(kova_table_reference_count(a), kova_table_reference_count(b));
  CHECK_INT(kova_table_instance_count(a), kova_table_instance_count(b));
  kova_iterator* ia = NULL;
  kova_iterator* ib = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_content(a, &ia));
  CHECK_STATUS(KOVA_S_OK, kova_table_content(b, &ib));
  CHECK_INT(kova_iterator_count(ia), kova_iterator_count(ib));
  kova_object* oa = NULL;
  kova_object* ob = NULL;
  while (kova_iterator_next(ia, &oa) == KOVA_S_OK) {
    CHECK_STATUS(KOVA_S_OK, kova_iterator_next(ib, &ob));
    size_t la = 0;
    size_t lb = 0;
    const char* ta = NULL;
    const char* tb = NULL;
    CHECK_INT(kova_object_kind(oa), kova_object_kind(ob));
    ta = kova_object_kova_id(oa, &la);
    tb = kova_object_kova_id(ob, &lb);
    CHECK_MEM(ta, la, tb, lb);
    ta = kova_object_plexo_id(oa, &la);
    tb = kova_object_plexo_id(ob, &lb);
    CHECK_MEM(ta, la, tb, lb);
    ta = kova_object_stamp(oa, &la);
    tb = kova_object_stamp(ob, &lb);
    CHECK_MEM(ta, la, tb, lb);
    ta = kova_object_custom_data(oa, &la);
    tb = kova_object_custom_data(ob, &lb);
    CHECK_MEM(ta, la, tb, lb);
    if (kova_object_kind(oa) == KOVA_INSTANCE) {
      ta = kova_instance_ref_id(oa, &la);
      tb = kova_instance_ref_id(ob, &lb);
      CHECK_MEM(ta, la, tb, lb);
    }
    CHECK_INT(kova_object_kss_version(oa), kova_object_kss_version(ob));
    CHECK_INT(kova_object_is_local(oa), kova_object_is_local(ob));
    CHECK_INT(1, kova_object_same(oa, ob));
    CHECK_INT(1, kova_object_stamp_equals(oa, ob));
    CHECK_INT(0, kova_object_shares(oa, ob));
    kova_object_release(oa);
    kova_object_release(ob);
  }
  CHECK(oa == NULL);
  CHECK_STATUS(KOVA_S_FALSE, kova_iterator_next(ib, &ob));
  kova_iterator_free(ia);
  kova_iterator_free(ib);
}

/* Writes a table (compress as given), reads the text into a new table and compares both. */
static void check_round_trip(kova_table* table, int compress) {
  char* text = NULL;
  size_t length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, compress, &text, &length));
  CHECK(text != NULL);
  CHECK_INT(strlen(text), length);
  kova_table* copy = kova_table_new();
  CHECK(copy != NULL);
  CHECK_STATUS(KOVA_S_OK, kova_table_read(copy, text, length));
  CHECK_INT(CURRENT_VERSION, kova_table_version(copy));
  check_same_tables(table, copy);
  kova_free(text);
  kova_table_free(copy);
}

static void round_trip_of(int example, const char* name) {
  kova_table* table = example ? READ_EXAMPLE_DOCUMENT(name, KOVA_S_OK) : READ_TEST_DOCUMENT(name, KOVA_S_OK);
  check_round_trip(table, 0);
  check_round_trip(table, 1);
  kova_table_free(table);
}

/* ---- New, clear ------------------------------------------------------------------------------ */

TEST(new_table_is_empty_at_the_current_version) {
  kova_table* table = kova_table_new();
  CHECK(table != NULL);
  check_counts(table, 0, 0, CURRENT_VERSION);
  CHECK_INT(0, kova_table_has_root(table));
  kova_object* root = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_root(table, &root));
  CHECK(root == kova_sentinel());
  kova_table_free(table);
}

TEST(clear_makes_the_table_new) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  check_counts(table, 3, 4, 8);
  CHECK_STATUS(KOVA_S_OK, kova_table_clear(table));
  check_counts(table, 0, 0, CURRENT_VERSION);
  CHECK_INT(0, kova_table_has_root(table));
  /* Reading again after clearing gives the document alone. */
  size_t length = 0;
  char* text = kova_example_document("v8_gearbox.json", &length);
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, text, length));
  check_counts(table, 3, 4, 8);
  free(text);
  kova_table_free(table);
}

TEST(clear_keeps_objects_held_by_handles) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* gearbox = find(table, "GBX-100");
  CHECK_STATUS(KOVA_S_OK, kova_table_clear(table));
  CHECK_KOVA_ID("GBX-100", gearbox);
  CHECK_INT(3, kova_reference_instance_count(gearbox));
  kova_object_release(gearbox);
  kova_table_free(table);
}

/* ---- Reading every version ------------------------------------------------------------------- */

TEST(read_version_6) {
  kova_table* table = READ_TEST_DOCUMENT("v6_valid.json", KOVA_S_OK);
  CHECK_MESSAGES("");
  check_counts(table, 1, 4, 6);
  check_root(table, "R6");
  /* Version 6 reads neither IsLocal nor CustomData. */
  check_object(table, "R6", KOVA_REFERENCE, "P-R6", "refstamp", 1, 0, "", NULL);
  check_object(table, "I1", KOVA_INSTANCE, "P-I1", kCE01, 0, 0, "", "R6");
  check_object(table, "I2", KOVA_INSTANCE, "P-I2", "barestamp", 2, 0, "", "R6");
  check_object(table, "I4", KOVA_INSTANCE, "P-I4", "bare4", 1, 0, "", "other");
  kova_table_free(table);
}

TEST(read_version_6_example) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v6_bracket.json", KOVA_S_OK);
  check_counts(table, 1, 2, 6);
  check_root(table, "BRK-2041");
  check_object(table, "ISO4762-M6x20.1", KOVA_INSTANCE, "ins-40c0771df085b79e",
               "+lLqMTFPzdEUXwpERWFfrDhL1tbL0EkhLwOR3yZgNU0=", 1, 0, "", "ISO4762-M6x20");
  kova_table_free(table);
}

TEST(read_version_7) {
  kova_table* table = READ_TEST_DOCUMENT("v7_valid.json", KOVA_S_OK);
  check_counts(table, 3, 3, 7);
  check_root(table, "R1");
  check_object(table, "R1", KOVA_REFERENCE, "P1", kCE02, 0, 0, "null", NULL);
  check_object(table, "I1", KOVA_INSTANCE, "PI1", "s1", 3, 0, "text one", "R2");
  check_object(table, "I2", KOVA_INSTANCE, "PI2", "s2", 1, 1, "null", "R2");
  check_object(table, "I3", KOVA_INSTANCE, "PI3", "s3", 2, 0, "null", "R3");
  check_object(table, "R2", KOVA_REFERENCE, "P2", "x", 0, 1, "", NULL);
  kova_table_free(table);
}

TEST(read_version_8) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  check_counts(table, 3, 4, 8);
  check_root(table, "GBX-100");
  check_object(table, "GBX-100", KOVA_REFERENCE, "prd-4bdb6e725c26c314",
               "TpuyJsEsVRzXg6LonX8yG6pRY6+PPtbaqmI7y+JEakA=", 2, 0,
               "{\"project\":\"P-7731\",\"owner\":\"design-office-2\"}", NULL);
  check_object(table, "GR-311.2", KOVA_INSTANCE, "ins-02f86720c6bfa270",
               "R2oiVpbPWig93zV+PE/T/RMMZjPuub4Y1w/gydJut+w=", 1, 0, "mirrored", "GR-311");
  check_object(table, "SHF-210", KOVA_REFERENCE, "prd-66cb07bf2889824d",
               "Z8FkxEtjT7IuYBfx5e/Z7vNdiFk5p9PSC7QHsBDVWlY=", 2, 1, "null", NULL);
  kova_table_free(table);
}

TEST(read_version_9) {
  kova_table* table = READ_TEST_DOCUMENT("v9_valid.json", KOVA_S_OK);
  check_counts(table, 1, 1, 9);
  check_root(table, "A");
  check_object(table, "A", KOVA_REFERENCE, "PA", "sa", 1, 0, "null", NULL);
  check_object(table, "a1", KOVA_INSTANCE, "Pa1", "s1", 5, 0, "null", "A");
  kova_table_free(table);
}

TEST(read_version_10) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v10_pump.json", KOVA_S_OK);
  check_counts(table, 2, 2, 10);
  check_root(table, "PMP-500");
  /* A bare stamp's version comes from IsSetKSS: true 2, false 1. */
  check_object(table, "PMP-500", KOVA_REFERENCE, "prd-15e35cdbb315646a",
               "ZBA3/UJS58/gOh2PxgOc04Jtu+G+JXgaVX2LNlRPqoM=", 2, 0, "null", NULL);
  check_object(table, "IMP-510", KOVA_REFERENCE, "prd-c5e8d1f02a96b347",
               "KPPCSRM165eCsmRkdOO15hjVWnfT2zciDgupsiGFooY=", 1, 1, "{\"material\":\"CuZn39Pb3\"}", NULL);
  check_object(table, "ISO4032-M8.1", KOVA_INSTANCE, "ins-7a31c0e95d24b8f6",
               "gXL8uVR8IYVwSdBTrlGPHLN9GMhOB2U4Mh4yBo/mZ+A=", 1, 1, "null", "ISO4032-M8");
  kova_table_free(table);
}

TEST(read_version_11) {
  kova_table* table = READ_TEST_DOCUMENT("v11_valid.json", KOVA_S_OK);
  check_counts(table, 2, 1, 11);
  check_root(table, "A");
  check_object(table, "a1", KOVA_INSTANCE, "Pa1", "abc", 0, 1, "c1", "A");
  check_object(table, "B", KOVA_REFERENCE, "PB", "sb", 9, 1, "null", NULL);
  kova_table_free(table);
}

TEST(read_version_12) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v12_conveyor.json", KOVA_S_OK);
  check_counts(table, 4, 6, 12);
  check_root(table, "CNV-1000");
  check_object(table, "Motortr\xC3\xA4ger-1030.1", KOVA_INSTANCE, "ins-a16c37e8b25f90d4",
               "JXO7fwQ8UHHNsQsIOvjeMhDOoU1X9SgLo80qpiPVBE0=", 1, 0, "Ausf\xC3\xBChrung links",
               "Motortr\xC3\xA4ger-1030");
  check_object(table, "FRM-1020", KOVA_REFERENCE, "prd-6e1f03b8c9d2a574",
               "l+K8qrR0COnebf/E+fPV+KWKVMszxDFUrWGZpfyTqdM=", 2, 1, "null", NULL);
  kova_table_free(table);
}

TEST(read_version_12_with_byte_order_mark) {
  kova_table* table = READ_TEST_DOCUMENT("bom_v12.json", KOVA_S_OK);
  check_counts(table, 1, 1, 12);
  check_root(table,
             "R\xC3\xA9"
             "f-1");
  check_object(table,
               "R\xC3\xA9"
               "f-1",
               KOVA_REFERENCE, "P\xE2\x82\xAC", "s", 2, 0, "\xE6\x97\xA5\xE6\x9C\xAC", NULL);
  kova_table_free(table);
}

TEST(read_envelope) {
  kova_table* enveloped = READ_EXAMPLE_DOCUMENT("v12_conveyor.envelope", KOVA_S_OK);
  kova_table* plain = READ_EXAMPLE_DOCUMENT("v12_conveyor.json", KOVA_S_OK);
  check_counts(enveloped, 4, 6, 12);
  check_root(enveloped, "CNV-1000");
  check_same_tables(plain, enveloped);
  kova_table_free(enveloped);
  kova_table_free(plain);
}

TEST(read_adds_to_what_the_table_holds) {
  kova_table* table = kova_table_new();
  kova_object* extra = kova_make_reference("EXTRA", "prd-extra", 1);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, extra));
  size_t length = 0;
  char* text = kova_example_document("v8_gearbox.json", &length);
  CHECK_STATUS(KOVA_S_OK, kova_table_read(table, text, length));
  check_counts(table, 4, 4, 8);
  check_root(table, "GBX-100");
  kova_object* found = find(table, "EXTRA");
  CHECK_INT(1, kova_object_shares(found, extra));
  kova_object_release(found);
  kova_object_release(extra);
  free(text);
  kova_table_free(table);
}

/* ---- Refused documents ----------------------------------------------------------------------- */

TEST(read_missing_mandatory_key_keeps_the_partial_fill) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("broken_v11.json", KOVA_E_FAIL);
  CHECK_MESSAGES("UNVALUATED MANDATORY FIELD IsLocal\nUNVALUATED MANDATORY FIELD KOVASynchroStamp\n");
  /* The reference before the failing one stays, with its instance; the version was read. */
  check_counts(table, 1, 1, 11);
  check_root(table, "TBL-300");
  check_object(table, "LEG-310.1", KOVA_INSTANCE, "ins-9d0c4b7f2e8a1653",
               "hLNQhn6cBoKw3TE17sDpbsYmcW7k1mg3yz4m5OU6rAY=", 2, 0, "null", "LEG-310");
  kova_object* missing = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "LEG-310", 7, &missing));
  CHECK(missing == kova_sentinel());
  kova_table_free(table);
}

TEST(read_every_missing_key_in_order) {
  kova_table* table = READ_TEST_DOCUMENT("v12_reference_missing_ids.json", KOVA_E_FAIL);
  CHECK_MESSAGES(
      "UNVALUATED MANDATORY FIELD KOVASynchroStamp\nUNVALUATED MANDATORY FIELD PlexoId\n"
      "UNVALUATED MANDATORY FIELD kOVAId\n");
  check_counts(table, 0, 0, 12);
  kova_table_free(table);
}

TEST(read_missing_key_of_an_instance) {
  kova_table* table = READ_TEST_DOCUMENT("v7_instance_missing_plexoid.json", KOVA_E_FAIL);
  CHECK_MESSAGES("UNVALUATED MANDATORY FIELD PlexoId\nPROBLEM PARSING INSTANCES\n");
  check_counts(table, 0, 0, 7);
  kova_table_free(table);
}

TEST(read_version_13_refused) {
  kova_table* table = READ_TEST_DOCUMENT("version_13.json", KOVA_E_FAIL);
  CHECK_MESSAGES("UNSUPPORTED VERSION ( version > 11 )\n");
  /* The version read is recorded even though the document was refused. */
  check_counts(table, 0, 0, 13);
  kova_table_free(table);
}

TEST(read_version_5_refused) {
  kova_table* table = READ_TEST_DOCUMENT("version_5.json", KOVA_E_FAIL);
  CHECK_MESSAGES("UNSUPPORTED VERSION ( version < 6 )\n");
  check_counts(table, 0, 0, 5);
  kova_table_free(table);
}

TEST(read_empty_object_refused) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  CHECK_STATUS(KOVA_E_FAIL, kova_table_read(table, "{}", 2));
  CHECK_MESSAGES("KOVA JSON EMPTY OR INVALID\n");
  /* Nothing was read: the table and its version stay as they were. */
  check_counts(table, 3, 4, 8);
  kova_table_free(table);
}

TEST(read_empty_and_blank_texts_refused) {
  const char* const texts[] = {"", " \n\t ", "[1, 2]"};
  for (size_t i = 0; i < sizeof texts / sizeof texts[0]; ++i) {
    kova_table* table = kova_table_new();
    CHECK_STATUS(KOVA_E_FAIL, kova_table_read(table, texts[i], strlen(texts[i])));
    CHECK_MESSAGES("KOVA JSON EMPTY OR INVALID\n");
    check_counts(table, 0, 0, CURRENT_VERSION);
    kova_table_free(table);
  }
}

TEST(read_without_version_refused) {
  kova_table* table = READ_TEST_DOCUMENT("v9_valid.json", KOVA_S_OK);
  size_t length = 0;
  char* text = kova_test_document("no_version.json", &length);
  CHECK_FAILS(kova_table_read(table, text, length));
  CHECK_MESSAGES("CANNOT READ VERSION ON KOVA JSON\n");
  check_counts(table, 1, 1, 9);
  free(text);
  kova_table_free(table);
}

TEST(read_malformed_refused) {
  kova_table* table = kova_table_new();
  size_t length = 0;
  char* text = kova_test_document("malformed.json", &length);
  CHECK_FAILS(kova_table_read(table, text, length));
  check_counts(table, 0, 0, CURRENT_VERSION);
  free(text);
  kova_table_free(table);
}

TEST(read_second_root_keeps_what_came_before) {
  kova_table* table = READ_TEST_DOCUMENT("v12_second_root.json", KOVA_E_FAIL);
  check_counts(table, 2, 0, 12);
  check_root(table, "A");
  check_object(table, "B", KOVA_REFERENCE, "PB", "s", 1, 1, "null", NULL);
  kova_table_free(table);
}

TEST(read_duplicate_reference_keeps_the_first) {
  kova_table* table = READ_TEST_DOCUMENT("v12_duplicate_reference.json", KOVA_E_FAIL);
  check_counts(table, 1, 0, 12);
  check_root(table, "A");
  kova_table_free(table);
}

TEST(read_corrupt_envelope_refused) {
  size_t length = 0;
  char* text = kova_example_document("v12_conveyor.envelope", &length);
  /* A payload cut in the middle no longer decompresses. */
  kova_table* table = kova_table_new();
  CHECK_FAILS(kova_table_read(table, text, length / 2));
  check_counts(table, 0, 0, CURRENT_VERSION);
  /* One wrong character in the middle of the payload. */
  text[length / 2] = text[length / 2] == 'A' ? 'B' : 'A';
  CHECK_FAILS(kova_table_read(table, text, length));
  CHECK_INT(0, kova_table_reference_count(table));
  free(text);
  kova_table_free(table);
}

/* ---- Writing --------------------------------------------------------------------------------- */

static kova_table* small_table(void) {
  kova_table* table = kova_table_new();
  CHECK(table != NULL);
  kova_object* root = kova_make_object(KOVA_REFERENCE, "R1", "P1", "V2:AB", 0);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(root, "null", 4));
  kova_object* leaf = kova_make_object(KOVA_REFERENCE, "R2", "P2", "V1:CD", 1);
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(leaf, "leaf data", KOVA_NUL_TERMINATED));
  kova_object* instance = kova_make_instance("R2.1", "I1", "R2");
  CHECK_STATUS(KOVA_S_OK, kova_object_set_stamp(instance, "bare", 4));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kss_version(instance, 2));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, root));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, leaf));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_instance(table, instance, root));
  kova_object_release(root);
  kova_object_release(leaf);
  kova_object_release(instance);
  return table;
}

TEST(write_plain) {
  kova_table* table = small_table();
  char* text = NULL;
  size_t length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &text, &length));
  CHECK_MESSAGES("");
  CHECK(text != NULL);
  CHECK_INT(strlen(text), length);
  CHECK(text[0] == '{');
  /* The current version, compact, every stamp with its version, "null" custom data left out. */
  CHECK(strstr(text, "\"version\":12") != NULL);
  CHECK(strstr(text, "\"V2:AB\"") != NULL);
  CHECK(strstr(text, "\"V2:bare\"") != NULL);
  CHECK(strstr(text, "\"CustomData\":\"leaf data\"") != NULL);
  CHECK(strstr(text, "null") == NULL);
  CHECK(strchr(text, '\n') == NULL);
  kova_free(text);
  kova_table_free(table);
}

TEST(write_envelope) {
  kova_table* table = small_table();
  char* plain = NULL;
  size_t plain_length = 0;
  char* envelope = NULL;
  size_t envelope_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &plain, &plain_length));
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 1, &envelope, &envelope_length));
  CHECK_INT(strlen(envelope), envelope_length);
  /* "V12:" + the size of the plain document + ":" + the payload. */
  char prefix[64];
  snprintf(prefix, sizeof prefix, "V12:%zu:", plain_length);
  CHECK(strncmp(envelope, prefix, strlen(prefix)) == 0);
  CHECK(envelope_length > strlen(prefix));
  char* opened = NULL;
  size_t opened_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_envelope_unpack(envelope, envelope_length, &opened, &opened_length));
  CHECK_MEM(plain, plain_length, opened, opened_length);
  kova_free(plain);
  kova_free(envelope);
  kova_free(opened);
  kova_table_free(table);
}

TEST(write_as_the_switch_says) {
  /* "IPLX_ACTIVATE_MAPPING_COMPRESSION" is unset here: -1 writes plain JSON. */
  CHECK(getenv("IPLX_ACTIVATE_MAPPING_COMPRESSION") == NULL);
  kova_table* table = small_table();
  char* plain = NULL;
  size_t plain_length = 0;
  char* by_switch = NULL;
  size_t by_switch_length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &plain, &plain_length));
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, -1, &by_switch, &by_switch_length));
  CHECK_MEM(plain, plain_length, by_switch, by_switch_length);
  kova_free(plain);
  kova_free(by_switch);
  kova_table_free(table);
}

TEST(write_refuses_other_compress_values) {
  kova_table* table = small_table();
  const int values[] = {2, -2, 100};
  for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i) {
    char* text = kova_sentinel();
    size_t length = 12345;
    CHECK_REFUSED(kova_table_write(table, values[i], &text, &length));
    CHECK(text == kova_sentinel());
    CHECK_INT(12345, length);
  }
  kova_table_free(table);
}

TEST(write_without_length) {
  kova_table* table = small_table();
  char* text = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &text, NULL));
  CHECK(text != NULL && text[0] == '{');
  kova_free(text);
  kova_table_free(table);
}

TEST(write_empty_table) {
  kova_table* table = kova_table_new();
  char* text = NULL;
  size_t length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &text, &length));
  kova_table* copy = kova_table_new();
  CHECK_STATUS(KOVA_S_OK, kova_table_read(copy, text, length));
  check_counts(copy, 0, 0, CURRENT_VERSION);
  kova_free(text);
  kova_table_free(copy);
  kova_table_free(table);
}

TEST(write_writes_the_current_version_whatever_was_read) {
  kova_table* table = READ_TEST_DOCUMENT("v7_valid.json", KOVA_S_OK);
  char* text = NULL;
  size_t length = 0;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &text, &length));
  CHECK(strstr(text, "\"version\":12") != NULL);
  kova_free(text);
  kova_table_free(table);
}

/* ---- Round trips: read(write(table)) holds the same objects ---------------------------------- */

TEST(round_trip_built_table) {
  kova_table* table = small_table();
  check_round_trip(table, 0);
  check_round_trip(table, 1);
  kova_table_free(table);
}

TEST(round_trip_version_6) { round_trip_of(0, "v6_valid.json"); }
TEST(round_trip_version_7) { round_trip_of(0, "v7_valid.json"); }
TEST(round_trip_version_8) { round_trip_of(1, "v8_gearbox.json"); }
TEST(round_trip_version_9) { round_trip_of(0, "v9_valid.json"); }
TEST(round_trip_version_10) { round_trip_of(1, "v10_pump.json"); }
TEST(round_trip_version_11) { round_trip_of(0, "v11_valid.json"); }
TEST(round_trip_version_12) { round_trip_of(1, "v12_conveyor.json"); }

/* ---- Adding, removing ------------------------------------------------------------------------ */

TEST(add_reference_identity_rule) {
  kova_table* table = kova_table_new();
  kova_object* first = kova_make_reference("K1", "P1", 1);
  kova_object* same_kova_id = kova_make_reference("K1", "P2", 1);
  kova_object* same_plexo_id = kova_make_reference("K2", "P1", 1);
  kova_object* other = kova_make_reference("K2", "P2", 1);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, first));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_add_reference(table, same_kova_id));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_add_reference(table, same_plexo_id));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_add_reference(table, first));
  CHECK_INT(1, kova_table_reference_count(table));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, other));
  CHECK_INT(2, kova_table_reference_count(table));
  kova_object_release(first);
  kova_object_release(same_kova_id);
  kova_object_release(same_plexo_id);
  kova_object_release(other);
  kova_table_free(table);
}

TEST(add_reference_root_rule) {
  kova_table* table = kova_table_new();
  kova_object* root = kova_make_reference("ROOT", "P-ROOT", 0);
  kova_object* second_root = kova_make_reference("ROOT2", "P-ROOT2", 0);
  kova_object* local = kova_make_reference("LOCAL", "P-LOCAL", 1);
  CHECK_INT(0, kova_table_has_root(table));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, local));
  CHECK_INT(0, kova_table_has_root(table));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, root));
  CHECK_INT(1, kova_table_has_root(table));
  /* At most one reference that is not local. */
  CHECK_FAILS(kova_table_add_reference(table, second_root));
  CHECK_INT(2, kova_table_reference_count(table));
  kova_object* found = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &found));
  CHECK_INT(1, kova_object_shares(found, root));
  kova_object_release(found);
  kova_object_release(root);
  kova_object_release(second_root);
  kova_object_release(local);
  kova_table_free(table);
}

TEST(add_reference_with_its_instances) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("R", "PR", 0);
  kova_object* i1 = kova_make_instance("R.1", "PI1", "X");
  kova_object* i2 = kova_make_instance("R.2", "PI2", "X");
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(reference, i1));
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(reference, i2));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  CHECK_INT(1, kova_table_reference_count(table));
  CHECK_INT(2, kova_table_instance_count(table));
  kova_object* found = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_instance_by_plexo_id(table, "PI2", 3, &found));
  CHECK_INT(1, kova_object_shares(found, i2));
  kova_object_release(found);
  kova_object_release(reference);
  kova_object_release(i1);
  kova_object_release(i2);
  kova_table_free(table);
}

TEST(remove_reference_the_same_one) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  /* Another object with the same kOVA id stands for the table's reference. */
  kova_object* look_alike = kova_make_reference("SHF-210", "other plexo id", 1);
  CHECK_STATUS(KOVA_S_OK, kova_table_remove_reference(table, look_alike));
  CHECK_INT(2, kova_table_reference_count(table));
  CHECK_INT(3, kova_table_instance_count(table));
  kova_object* found = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "SHF-210", KOVA_NUL_TERMINATED, &found));
  CHECK(found == kova_sentinel());
  CHECK_STATUS(KOVA_E_FAIL, kova_table_remove_reference(table, look_alike));
  CHECK_INT(2, kova_table_reference_count(table));
  kova_object_release(look_alike);
  kova_table_free(table);
}

TEST(remove_root_reference) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* root = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &root));
  CHECK_STATUS(KOVA_S_OK, kova_table_remove_reference(table, root));
  CHECK_INT(0, kova_table_has_root(table));
  CHECK_INT(2, kova_table_reference_count(table));
  CHECK_INT(1, kova_table_instance_count(table));
  /* The removed reference lives on with its instances while a handle holds it. */
  CHECK_INT(3, kova_reference_instance_count(root));
  kova_object_release(root);
  kova_table_free(table);
}

TEST(add_instance_to_the_same_reference) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("R", "PR", 0);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  /* A separate object with the reference's kOVA id names the table's reference. */
  kova_object* look_alike = kova_make_reference("R", "", 0);
  kova_object* instance = kova_make_instance("R.1", "PI", "X");
  CHECK_STATUS(KOVA_S_OK, kova_table_add_instance(table, instance, look_alike));
  CHECK_INT(1, kova_table_instance_count(table));
  CHECK_INT(1, kova_reference_instance_count(reference));
  CHECK_INT(0, kova_reference_instance_count(look_alike));
  kova_object* found = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_instance_by_kova_id(table, "R.1", 3, &found));
  CHECK_INT(1, kova_object_shares(found, instance));
  kova_object_release(found);
  kova_object_release(look_alike);
  kova_object_release(instance);
  kova_object_release(reference);
  kova_table_free(table);
}

TEST(add_instance_refused) {
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("R", "PR", 0);
  kova_object* stranger = kova_make_reference("S", "PS", 1);
  kova_object* instance = kova_make_instance("R.1", "PI", "X");
  kova_object* twin = kova_make_instance("R.1", "PI-other", "X");
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  /* A reference that the table does not hold. */
  CHECK_FAILS(kova_table_add_instance(table, instance, stranger));
  CHECK_INT(0, kova_table_instance_count(table));
  CHECK_STATUS(KOVA_S_OK, kova_table_add_instance(table, instance, reference));
  /* The same instance (equal kOVA ids) twice. */
  CHECK_FAILS(kova_table_add_instance(table, twin, reference));
  CHECK_INT(1, kova_table_instance_count(table));
  kova_object_release(reference);
  kova_object_release(stranger);
  kova_object_release(instance);
  kova_object_release(twin);
  kova_table_free(table);
}

TEST(remove_instance) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* gearbox = find(table, "GBX-100");
  kova_object* gear = find(table, "GR-311.2");
  kova_object* key = find(table, "DIN6885-A6x6x20.1");
  /* An instance of another reference is not removed. */
  CHECK_FAILS(kova_table_remove_instance(table, key, gearbox));
  CHECK_INT(4, kova_table_instance_count(table));
  CHECK_STATUS(KOVA_S_OK, kova_table_remove_instance(table, gear, gearbox));
  CHECK_INT(3, kova_table_instance_count(table));
  CHECK_INT(2, kova_reference_instance_count(gearbox));
  kova_object* found = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_instance_by_kova_id(table, "GR-311.2", KOVA_NUL_TERMINATED, &found));
  CHECK(found == kova_sentinel());
  CHECK_FAILS(kova_table_remove_instance(table, gear, gearbox));
  kova_object_release(gearbox);
  kova_object_release(gear);
  kova_object_release(key);
  kova_table_free(table);
}

/* ---- Look-ups, root -------------------------------------------------------------------------- */

TEST(find_references_by_both_ids) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* by_kova = NULL;
  kova_object* by_plexo = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, "GR-311", 6, &by_kova));
  CHECK_MESSAGES("");
  CHECK_STATUS(KOVA_S_OK,
               kova_table_find_reference_by_plexo_id(table, "prd-e4d206b0eb78709b", KOVA_NUL_TERMINATED, &by_plexo));
  CHECK_INT(KOVA_REFERENCE, kova_object_kind(by_kova));
  CHECK_KOVA_ID("GR-311", by_plexo);
  CHECK_INT(1, kova_object_shares(by_kova, by_plexo));
  kova_object_release(by_kova);
  kova_object_release(by_plexo);
  kova_table_free(table);
}

TEST(find_instances_by_both_ids) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* by_kova = NULL;
  kova_object* by_plexo = NULL;
  CHECK_STATUS(KOVA_S_OK,
               kova_table_find_instance_by_kova_id(table, "DIN6885-A6x6x20.1", KOVA_NUL_TERMINATED, &by_kova));
  CHECK_STATUS(KOVA_S_OK, kova_table_find_instance_by_plexo_id(table, "ins-0089adb2ddf37e7e", 20, &by_plexo));
  CHECK_INT(KOVA_INSTANCE, kova_object_kind(by_plexo));
  CHECK_KOVA_ID("DIN6885-A6x6x20.1", by_plexo);
  CHECK_INT(1, kova_object_shares(by_kova, by_plexo));
  kova_object_release(by_kova);
  kova_object_release(by_plexo);
  kova_table_free(table);
}

TEST(find_nothing_leaves_out_untouched) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* out = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "NOPE", 4, &out));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_plexo_id(table, "NOPE", 4, &out));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_instance_by_kova_id(table, "NOPE", 4, &out));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_instance_by_plexo_id(table, "NOPE", 4, &out));
  /* References and instances are looked up apart. */
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "GR-311.1", 8, &out));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_instance_by_kova_id(table, "GR-311", 6, &out));
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_instance_by_plexo_id(table, "prd-e4d206b0eb78709b", 20, &out));
  CHECK(out == kova_sentinel());
  kova_table_free(table);
}

TEST(find_reads_exactly_length_bytes) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* out = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, "GR-311.1", 6, &out));
  CHECK_KOVA_ID("GR-311", out);
  kova_object_release(out);
  out = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_reference_by_kova_id(table, "GR-311", 5, &out));
  CHECK(out == kova_sentinel());
  kova_table_free(table);
}

TEST(found_handles_share_the_table_object) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* found = find(table, "SHF-210.1");
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(found, "SHAFT", 5));
  kova_object_release(found);
  /* The table follows the change of id. */
  kova_object* out = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_find_instance_by_kova_id(table, "SHF-210.1", KOVA_NUL_TERMINATED, &out));
  CHECK_STATUS(KOVA_S_OK, kova_table_find_instance_by_kova_id(table, "SHAFT", 5, &out));
  size_t length = 0;
  const char* plexo = kova_object_plexo_id(out, &length);
  CHECK_MEM("ins-156889694c8c0563", 20, plexo, length);
  kova_object_release(out);
  kova_table_free(table);
}

TEST(root_of_a_table_without_one) {
  kova_table* table = kova_table_new();
  kova_object* local = kova_make_reference("L", "PL", 1);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, local));
  CHECK_INT(0, kova_table_has_root(table));
  kova_object* root = kova_sentinel();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_root(table, &root));
  CHECK(root == kova_sentinel());
  /* Once the reference is not local, it is the root. */
  CHECK_STATUS(KOVA_S_OK, kova_object_set_is_local(local, 0));
  CHECK_INT(1, kova_table_has_root(table));
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &root));
  CHECK_INT(1, kova_object_shares(root, local));
  kova_object_release(root);
  kova_object_release(local);
  kova_table_free(table);
}

static const kova_test_case cases[] = {
    TEST_CASE(new_table_is_empty_at_the_current_version),
    TEST_CASE(clear_makes_the_table_new),
    TEST_CASE(clear_keeps_objects_held_by_handles),
    TEST_CASE(read_version_6),
    TEST_CASE(read_version_6_example),
    TEST_CASE(read_version_7),
    TEST_CASE(read_version_8),
    TEST_CASE(read_version_9),
    TEST_CASE(read_version_10),
    TEST_CASE(read_version_11),
    TEST_CASE(read_version_12),
    TEST_CASE(read_version_12_with_byte_order_mark),
    TEST_CASE(read_envelope),
    TEST_CASE(read_adds_to_what_the_table_holds),
    TEST_CASE(read_missing_mandatory_key_keeps_the_partial_fill),
    TEST_CASE(read_every_missing_key_in_order),
    TEST_CASE(read_missing_key_of_an_instance),
    TEST_CASE(read_version_13_refused),
    TEST_CASE(read_version_5_refused),
    TEST_CASE(read_empty_object_refused),
    TEST_CASE(read_empty_and_blank_texts_refused),
    TEST_CASE(read_without_version_refused),
    TEST_CASE(read_malformed_refused),
    TEST_CASE(read_second_root_keeps_what_came_before),
    TEST_CASE(read_duplicate_reference_keeps_the_first),
    TEST_CASE(read_corrupt_envelope_refused),
    TEST_CASE(write_plain),
    TEST_CASE(write_envelope),
    TEST_CASE(write_as_the_switch_says),
    TEST_CASE(write_refuses_other_compress_values),
    TEST_CASE(write_without_length),
    TEST_CASE(write_empty_table),
    TEST_CASE(write_writes_the_current_version_whatever_was_read),
    TEST_CASE(round_trip_built_table),
    TEST_CASE(round_trip_version_6),
    TEST_CASE(round_trip_version_7),
    TEST_CASE(round_trip_version_8),
    TEST_CASE(round_trip_version_9),
    TEST_CASE(round_trip_version_10),
    TEST_CASE(round_trip_version_11),
    TEST_CASE(round_trip_version_12),
    TEST_CASE(add_reference_identity_rule),
    TEST_CASE(add_reference_root_rule),
    TEST_CASE(add_reference_with_its_instances),
    TEST_CASE(remove_reference_the_same_one),
    TEST_CASE(remove_root_reference),
    TEST_CASE(add_instance_to_the_same_reference),
    TEST_CASE(add_instance_refused),
    TEST_CASE(remove_instance),
    TEST_CASE(find_references_by_both_ids),
    TEST_CASE(find_instances_by_both_ids),
    TEST_CASE(find_nothing_leaves_out_untouched),
    TEST_CASE(find_reads_exactly_length_bytes),
    TEST_CASE(found_handles_share_the_table_object),
    TEST_CASE(root_of_a_table_without_one),
};

RUN_TESTS(cases)
