/* c_host: a C host of KOVAMappingServices, through the C interface (kova_mapping.h).
 *
 * Builds a small table, writes it plain and enveloped and reads the envelope back, reads the
 * shipped example documents (one of them refused, with the reader's reasons), looks objects up,
 * changes one through a handle and sees it through the table, iterates, makes stamp texts,
 * computes a stamp when the environment allows it, and receives the failure reasons through a log
 * callback. Every handle and text is given back before the end.
 *
 * Usage: c_host [DOCUMENTS_FOLDER]   (default: the examples/documents folder of the source tree)
 * Exit status: 0 when every step behaved as expected, 1 otherwise. */
#include <KOVAMappingServices/kova_mapping.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifndef KOVA_EXAMPLE_DOCUMENTS
#define KOVA_EXAMPLE_DOCUMENTS "examples/documents"
#endif

static int failures = 0;

/* Reports a step that did not give the status expected, with the library's messages. */
static int check(int32_t status, int32_t expected, const char* step) {
  if (status == expected) return 1;
  fprintf(stderr, "FAILED %s: status 0x%08X, expected 0x%08X\n%s", step, (unsigned)status, (unsigned)expected,
          kova_last_messages());
  ++failures;
  return 0;
}

/* The whole content of a file in malloc'd memory (NUL-terminated), or NULL. */
static char* read_file(const char* folder, const char* name, size_t* length) {
  char path[4096];
  if (snprintf(path, sizeof path, "%s/%s", folder, name) >= (int)sizeof path) return NULL;
  FILE* file = fopen(path, "rb");
  if (file == NULL) {
    fprintf(stderr, "cannot open %s\n", path);
    return NULL;
  }
  char* text = NULL;
  size_t size = 0;
  size_t capacity = 0;
  for (;;) {
    if (size + 4096 + 1 > capacity) {
      capacity = capacity * 2 + 4096 + 1;
      char* grown = realloc(text, capacity);
      if (grown == NULL) {
        free(text);
        fclose(file);
        return NULL;
      }
      text = grown;
    }
    const size_t got = fread(text + size, 1, 4096, file);
    size += got;
    if (got < 4096) break;
  }
  const int failed = ferror(file);
  fclose(file);
  if (failed) {
    free(text);
    return NULL;
  }
  text[size] = '\0';
  *length = size;
  return text;
}

/* A new reference or instance with the given fields. */
static kova_object* make_object(int kind, const char* kova_id, const char* plexo_id, const char* stamp, int is_local) {
  kova_object* object = kind == KOVA_REFERENCE ? kova_reference_new() : kova_instance_new();
  if (object == NULL) return NULL;
  if (kova_object_set_kova_id(object, kova_id, KOVA_NUL_TERMINATED) < 0 ||
      kova_object_set_plexo_id(object, plexo_id, KOVA_NUL_TERMINATED) < 0 ||
      kova_object_set_stamp(object, stamp, KOVA_NUL_TERMINATED) < 0 || kova_object_set_is_local(object, is_local) < 0) {
    kova_object_release(object);
    return NULL;
  }
  return object;
}

/* Builds a table, writes it both ways, reads the envelope back. */
static void build_and_write(void) {
  kova_table* table = kova_table_new();
  kova_object* assembly = make_object(KOVA_REFERENCE, "ASM-100", "prd-7f3a", "V2:3q2+7w==", 0);
  kova_object* bolt = make_object(KOVA_REFERENCE, "BOLT-M6", "prd-91c0", "V1:mJ8k0A==", 1);
  kova_object* occurrence = make_object(KOVA_INSTANCE, "BOLT-M6.1", "occ-1", "V2:Zm9vYmFy", 0);
  kova_object* clash = make_object(KOVA_REFERENCE, "OTHER", "prd-91c0", "", 1);
  if (table == NULL || assembly == NULL || bolt == NULL || occurrence == NULL || clash == NULL) {
    fprintf(stderr, "FAILED build: out of memory\n");
    ++failures;
  } else {
    check(kova_instance_set_ref_id(occurrence, "BOLT-M6", KOVA_NUL_TERMINATED), KOVA_S_OK, "set RefID");
    check(kova_table_add_reference(table, assembly), KOVA_S_OK, "add the root");
    check(kova_table_add_reference(table, bolt), KOVA_S_OK, "add a local reference");
    check(kova_table_add_instance(table, occurrence, assembly), KOVA_S_OK, "add an instance");
    /* Same Plexo id as the bolt: refused by the identity rule, and the messages say why. */
    if (check(kova_table_add_reference(table, clash), KOVA_E_FAIL, "refuse a clash")) {
      printf("clash refused: %s", kova_last_messages());
    }
    printf("built: %zu references, %zu instances, root %s, version %d\n", kova_table_reference_count(table),
           kova_table_instance_count(table), kova_table_has_root(table) ? "yes" : "no", (int)kova_table_version(table));

    char* plain = NULL;
    size_t plain_length = 0;
    char* envelope = NULL;
    size_t envelope_length = 0;
    if (check(kova_table_write(table, 0, &plain, &plain_length), KOVA_S_OK, "write plain") &&
        check(kova_table_write(table, 1, &envelope, &envelope_length), KOVA_S_OK, "write enveloped")) {
      printf("written: %zu bytes of JSON, %zu bytes enveloped (%.12s...)\n", plain_length, envelope_length, envelope);
      kova_table* copy = kova_table_new();
      if (copy != NULL && check(kova_table_read(copy, envelope, envelope_length), KOVA_S_OK, "read the envelope")) {
        printf("read back: %zu references, %zu instances\n", kova_table_reference_count(copy),
               kova_table_instance_count(copy));
      }
      kova_table_free(copy);
    }
    kova_free(plain);
    kova_free(envelope);
  }
  kova_object_release(clash);
  kova_object_release(occurrence);
  kova_object_release(bolt);
  kova_object_release(assembly);
  kova_table_free(table);
}

/* Reads a shipped document; returns the table (NULL when it was refused or unreadable). A
 * document that should be read and is not, or should be refused and is not, counts as a failure. */
static kova_table* read_document(const char* folder, const char* name, int should_read) {
  size_t length = 0;
  char* text = read_file(folder, name, &length);
  if (text == NULL) {
    ++failures;
    return NULL;
  }
  kova_table* table = kova_table_new();
  const int32_t status = table != NULL ? kova_table_read(table, text, length) : KOVA_E_OUTOFMEMORY;
  free(text);
  if (status < 0) {
    printf("%s: refused, status 0x%08X:\n%s", name, (unsigned)status, kova_last_messages());
    if (should_read) ++failures;
    kova_table_free(table);
    return NULL;
  }
  if (!should_read) {
    fprintf(stderr, "FAILED: %s was accepted\n", name);
    ++failures;
  }
  printf("%s: version %d, %zu references, %zu instances\n", name, (int)kova_table_version(table),
         kova_table_reference_count(table), kova_table_instance_count(table));
  return table;
}

/* Looks an instance up, changes its stamp through the handle and sees it through the table. */
static void look_up_and_edit(kova_table* table) {
  kova_object* found = NULL;
  if (!check(kova_table_find_instance_by_kova_id(table, "GR-311.2", KOVA_NUL_TERMINATED, &found), KOVA_S_OK,
             "find GR-311.2")) {
    return;
  }
  size_t length = 0;
  const char* ref_id = kova_instance_ref_id(found, &length);
  printf("GR-311.2: Plexo id %s, RefID %s, stamp version %d, custom data \"%s\"\n", kova_object_plexo_id(found, NULL),
         ref_id, (int)kova_object_kss_version(found), kova_object_custom_data(found, NULL));

  check(kova_object_set_stamp(found, "V3:bmV3c3RhbXA=", KOVA_NUL_TERMINATED), KOVA_S_OK, "set a stamp");
  kova_object* again = NULL;
  if (check(kova_table_find_instance_by_plexo_id(table, "ins-02f86720c6bfa270", KOVA_NUL_TERMINATED, &again), KOVA_S_OK,
            "find by Plexo id")) {
    printf("seen through the table: stamp %s, version %d, same object: %s\n", kova_object_stamp(again, NULL),
           (int)kova_object_kss_version(again), kova_object_shares(found, again) ? "yes" : "no");
    if (!kova_object_shares(found, again) || strcmp(kova_object_stamp(again, NULL), "bmV3c3RhbXA=") != 0) {
      fprintf(stderr, "FAILED: the change is not seen through the table\n");
      ++failures;
    }
  }
  kova_object_release(again);
  kova_object_release(found);

  kova_object* missing = NULL;
  if (check(kova_table_find_reference_by_kova_id(table, "NOPE", KOVA_NUL_TERMINATED, &missing), KOVA_E_FAIL,
            "miss a look-up")) {
    printf("look-up of NOPE: %s", kova_last_messages());
  }
}

/* The document order: each reference, then its instances. */
static void iterate(const kova_table* table) {
  kova_iterator* iterator = NULL;
  if (!check(kova_table_content(table, &iterator), KOVA_S_OK, "list the content")) return;
  printf("content (%zu objects):\n", kova_iterator_count(iterator));
  kova_object* object = NULL;
  while (kova_iterator_next(iterator, &object) == KOVA_S_OK) {
    if (kova_object_kind(object) == KOVA_REFERENCE) {
      printf("  reference %-20s %zu instances%s\n", kova_object_kova_id(object, NULL),
             kova_reference_instance_count(object), kova_object_is_local(object) ? ", local" : ", root");
    } else {
      printf("    instance %-19s of %s\n", kova_object_kova_id(object, NULL), kova_instance_ref_id(object, NULL));
    }
    kova_object_release(object);
  }
  kova_iterator_free(iterator);
}

/* Stamp texts, and a stamp computed from attribute values when the environment allows it. */
static void stamps(void) {
  char* text = NULL;
  if (check(kova_stamp_from_ce("CESv1(x'00AF31')", KOVA_NUL_TERMINATED, &text, NULL), KOVA_S_OK, "CE stamp")) {
    printf("from CE: %s (version %d)\n", text, (int)kova_stamp_version(text, KOVA_NUL_TERMINATED));
  }
  kova_free(text);
  text = NULL;
  if (check(kova_stamp_with_version("abc", KOVA_NUL_TERMINATED, 2, &text, NULL), KOVA_S_OK, "versioned stamp")) {
    printf("versioned: %s\n", text);
  }
  kova_free(text);

  kova_attributes* attributes = kova_attributes_new();
  if (attributes == NULL) {
    ++failures;
    return;
  }
  const double diameters[] = {6.5, 8.5, 10.5};
  check(kova_attributes_set_string(attributes, "Name", KOVA_NUL_TERMINATED, "Housing", KOVA_NUL_TERMINATED), KOVA_S_OK,
        "attribute Name");
  check(kova_attributes_set_real(attributes, "Mass", KOVA_NUL_TERMINATED, 2.5), KOVA_S_OK, "attribute Mass");
  check(kova_attributes_set_integer(attributes, "Quantity", KOVA_NUL_TERMINATED, 4), KOVA_S_OK, "attribute Quantity");
  check(kova_attributes_set_time(attributes, "Created", KOVA_NUL_TERMINATED, 1700000000), KOVA_S_OK,
        "attribute Created");
  check(kova_attributes_set_unset(attributes, "Tolerance", KOVA_NUL_TERMINATED, KOVA_VALUE_REAL), KOVA_S_OK,
        "attribute Tolerance");
  check(kova_attributes_set_real_list(attributes, "HoleDiameters", KOVA_NUL_TERMINATED, diameters, 3), KOVA_S_OK,
        "attribute HoleDiameters");
  char* stamp = NULL;
  const int32_t status = kova_stamp_compute(attributes, &stamp, NULL);
  if (status >= 0) {
    printf("stamp of %zu attributes: %s\n", kova_attributes_count(attributes), stamp);
  } else {
    /* Not a failure of this program: computing needs DONOTUSE_ENABLEKSSGEN at load time. */
    printf("no stamp computed (status 0x%08X): %s", (unsigned)status, kova_last_messages());
  }
  kova_free(stamp);
  kova_attributes_free(attributes);
}

struct received {
  int lines;
};

static void on_line(const char* context, const char* message, void* user) {
  struct received* received = user;
  ++received->lines;
  printf("  callback: [%s] %s\n", context, message);
}

/* The failure reasons of a refused document, through a log callback of this thread. */
static void callback(const char* folder) {
  struct received received = {0};
  if (!check(kova_log_set_callback(on_line, &received, KOVA_LOG_REASONS), KOVA_S_OK, "install a callback")) return;
  printf("with a callback (log active: %d):\n", kova_log_is_active());
  kova_table_free(read_document(folder, "broken_v11.json", 0));
  check(kova_log_set_callback(NULL, NULL, KOVA_LOG_REASONS), KOVA_S_OK, "remove the callback");
  if (received.lines == 0) {
    fprintf(stderr, "FAILED: the callback received no line\n");
    ++failures;
  }
}

int main(int argc, char** argv) {
  const char* folder = argc > 1 ? argv[1] : KOVA_EXAMPLE_DOCUMENTS;
  printf("libkovamapping_c %s\n", kova_version());

  build_and_write();

  const char* documents[] = {"v6_bracket.json", "v10_pump.json", "v12_conveyor.envelope"};
  for (size_t i = 0; i < sizeof documents / sizeof documents[0]; ++i)
    kova_table_free(read_document(folder, documents[i], 1));

  /* A document with errors: refused, and kova_last_messages() says why. */
  kova_table_free(read_document(folder, "broken_v11.json", 0));

  kova_table* gearbox = read_document(folder, "v8_gearbox.json", 1);
  if (gearbox != NULL) {
    look_up_and_edit(gearbox);
    iterate(gearbox);
    kova_table_free(gearbox);
  }

  stamps();
  callback(folder);

  if (failures != 0) {
    fprintf(stderr, "%d step(s) failed\n", failures);
    return 1;
  }
  printf("done\n");
  return 0;
}
