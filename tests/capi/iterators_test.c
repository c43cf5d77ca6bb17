/* Iterations over a table and over a reference's instances: order, end, snapshots. */
#include "check.h"

static kova_object* find_reference(kova_table* table, const char* kova_id) {
  kova_object* object = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_find_reference_by_kova_id(table, kova_id, KOVA_NUL_TERMINATED, &object));
  return object;
}

TEST(references_in_table_order) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_references(table, &iterator));
  CHECK_MESSAGES("");
  CHECK_ITERATION(iterator, "GBX-100", "SHF-210", "GR-311");
  kova_iterator_free(iterator);
  kova_table_free(table);
}

TEST(instances_reference_by_reference) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_instances(table, &iterator));
  CHECK_ITERATION(iterator, "SHF-210.1", "GR-311.1", "GR-311.2", "DIN6885-A6x6x20.1");
  kova_iterator_free(iterator);
  kova_table_free(table);
}

TEST(content_in_document_order) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_content(table, &iterator));
  CHECK_ITERATION(iterator, "GBX-100", "SHF-210.1", "GR-311.1", "GR-311.2", "SHF-210", "DIN6885-A6x6x20.1", "GR-311");
  kova_iterator_free(iterator);
  kova_table_free(table);
}

TEST(content_of_a_larger_document) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v12_conveyor.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_content(table, &iterator));
  CHECK_ITERATION(iterator, "CNV-1000", "RLR-1010.1", "RLR-1010.2", "FRM-1020.1", "Motortr\xC3\xA4ger-1030.1",
                  "RLR-1010", "FRM-1020", "ISO4762-M8x30.1", "ISO4762-M8x30.2", "Motortr\xC3\xA4ger-1030");
  kova_iterator_free(iterator);
  kova_table_free(table);
}

TEST(instances_of_a_reference) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* gearbox = find_reference(table, "GBX-100");
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(gearbox, &iterator));
  CHECK_ITERATION(iterator, "SHF-210.1", "GR-311.1", "GR-311.2");
  kova_iterator_free(iterator);
  /* A reference without instances. */
  kova_object* gear = find_reference(table, "GR-311");
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(gear, &iterator));
  CHECK_INT(0, kova_iterator_count(iterator));
  kova_object* object = kova_sentinel();
  CHECK_STATUS(KOVA_S_FALSE, kova_iterator_next(iterator, &object));
  CHECK(object == NULL);
  kova_iterator_free(iterator);
  kova_object_release(gearbox);
  kova_object_release(gear);
  kova_table_free(table);
}

TEST(instances_of_an_instance_refused) {
  kova_object* instance = kova_make_instance("I", "PI", "R");
  kova_iterator* iterator = kova_sentinel();
  CHECK_REFUSED(kova_reference_instances(instance, &iterator));
  CHECK(iterator == kova_sentinel());
  kova_object_release(instance);
}

TEST(iterations_of_an_empty_table) {
  kova_table* table = kova_table_new();
  kova_iterator* iterators[3] = {NULL, NULL, NULL};
  CHECK_STATUS(KOVA_S_OK, kova_table_references(table, &iterators[0]));
  CHECK_STATUS(KOVA_S_OK, kova_table_instances(table, &iterators[1]));
  CHECK_STATUS(KOVA_S_OK, kova_table_content(table, &iterators[2]));
  for (int i = 0; i < 3; ++i) {
    CHECK(iterators[i] != NULL);
    CHECK_INT(0, kova_iterator_count(iterators[i]));
    kova_object* object = kova_sentinel();
    CHECK_STATUS(KOVA_S_FALSE, kova_iterator_next(iterators[i], &object));
    CHECK(object == NULL);
    kova_iterator_free(iterators[i]);
  }
  kova_table_free(table);
}

TEST(snapshot_ignores_later_additions_and_removals) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_iterator* references = NULL;
  kova_iterator* content = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_references(table, &references));
  CHECK_STATUS(KOVA_S_OK, kova_table_content(table, &content));
  kova_object* added = kova_make_reference("NEW", "P-NEW", 1);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, added));
  kova_object* shaft = find_reference(table, "SHF-210");
  CHECK_STATUS(KOVA_S_OK, kova_table_remove_reference(table, shaft));
  CHECK_INT(3, kova_table_reference_count(table));
  CHECK_ITERATION(references, "GBX-100", "SHF-210", "GR-311");
  CHECK_ITERATION(content, "GBX-100", "SHF-210.1", "GR-311.1", "GR-311.2", "SHF-210", "DIN6885-A6x6x20.1", "GR-311");
  /* A new iteration sees the table as it is now. */
  kova_iterator* now = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_references(table, &now));
  CHECK_ITERATION(now, "GBX-100", "GR-311", "NEW");
  kova_iterator_free(now);
  kova_iterator_free(references);
  kova_iterator_free(content);
  kova_object_release(added);
  kova_object_release(shaft);
  kova_table_free(table);
}

TEST(snapshot_of_a_reference_ignores_later_instances) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_object* gearbox = find_reference(table, "GBX-100");
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_reference_instances(gearbox, &iterator));
  kova_object* added = kova_make_instance("GR-311.3", "ins-new", "GR-311");
  CHECK_STATUS(KOVA_S_OK, kova_reference_add_instance(gearbox, added));
  CHECK_INT(4, kova_reference_instance_count(gearbox));
  CHECK_ITERATION(iterator, "SHF-210.1", "GR-311.1", "GR-311.2");
  kova_iterator_free(iterator);
  kova_object_release(added);
  kova_object_release(gearbox);
  kova_table_free(table);
}

TEST(snapshot_sees_changes_of_the_objects) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v8_gearbox.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_references(table, &iterator));
  kova_object* shaft = find_reference(table, "SHF-210");
  CHECK_STATUS(KOVA_S_OK, kova_object_set_kova_id(shaft, "SHAFT", KOVA_NUL_TERMINATED));
  CHECK_STATUS(KOVA_S_OK, kova_object_set_custom_data(shaft, "changed", KOVA_NUL_TERMINATED));
  kova_object* object = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &object));
  kova_object_release(object);
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &object));
  CHECK_KOVA_ID("SHAFT", object);
  CHECK_INT(1, kova_object_shares(object, shaft));
  CHECK_STR("changed", kova_object_custom_data(object, NULL));
  kova_object_release(object);
  kova_iterator_free(iterator);
  kova_object_release(shaft);
  kova_table_free(table);
}

TEST(iteration_gives_new_handles) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v6_bracket.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_instances(table, &iterator));
  kova_object* first = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &first));
  kova_iterator_free(iterator);
  kova_table_free(table);
  /* The handle belongs to the caller: it outlives both the iterator and the table. */
  CHECK_KOVA_ID("ISO4762-M6x20.1", first);
  CHECK_INT(KOVA_INSTANCE, kova_object_kind(first));
  CHECK_STR("ISO4762-M6x20", kova_instance_ref_id(first, NULL));
  kova_object_release(first);
}

TEST(iteration_handles_share_the_table_objects) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v6_bracket.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_references(table, &iterator));
  kova_object* bracket = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &bracket));
  kova_object* root = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_root(table, &root));
  CHECK_INT(1, kova_object_shares(bracket, root));
  kova_object_release(root);
  kova_object_release(bracket);
  kova_iterator_free(iterator);
  kova_table_free(table);
}

TEST(iterator_outlives_its_table) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v10_pump.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_content(table, &iterator));
  kova_table_free(table);
  CHECK_ITERATION(iterator, "PMP-500", "IMP-510.1", "ISO4032-M8.1", "IMP-510");
  kova_iterator_free(iterator);
}

TEST(iterator_free_before_the_end) {
  kova_table* table = READ_EXAMPLE_DOCUMENT("v12_conveyor.json", KOVA_S_OK);
  kova_iterator* iterator = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_content(table, &iterator));
  CHECK_INT(10, kova_iterator_count(iterator));
  kova_object* object = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_iterator_next(iterator, &object));
  /* The count is the snapshot's size, however far the iteration went. */
  CHECK_INT(10, kova_iterator_count(iterator));
  kova_iterator_free(iterator);
  CHECK_KOVA_ID("CNV-1000", object);
  kova_object_release(object);
  kova_iterator_free(NULL);
  kova_table_free(table);
}

static const kova_test_case cases[] = {
    TEST_CASE(references_in_table_order),
    TEST_CASE(instances_reference_by_reference),
    TEST_CASE(content_in_document_order),
    TEST_CASE(content_of_a_larger_document),
    TEST_CASE(instances_of_a_reference),
    TEST_CASE(instances_of_an_instance_refused),
    TEST_CASE(iterations_of_an_empty_table),
    TEST_CASE(snapshot_ignores_later_additions_and_removals),
    TEST_CASE(snapshot_of_a_reference_ignores_later_instances),
    TEST_CASE(snapshot_sees_changes_of_the_objects),
    TEST_CASE(iteration_gives_new_handles),
    TEST_CASE(iteration_handles_share_the_table_objects),
    TEST_CASE(iterator_outlives_its_table),
    TEST_CASE(iterator_free_before_the_end),
};

RUN_TESTS(cases)
