/* Diagnostic lines: kova_log_is_active and the per-thread log callback. The environment of these
 * tests has "ActivateKOVALogger" unset. */
/* POSIX threads: ThreadSanitizer follows them (it does not see threads made by thrd_create). */
#define _POSIX_C_SOURCE 200809L

#include "check.h"

#include <pthread.h>

#define MAX_LINES 64

/* The lines a callback received. */
typedef struct {
  int count;
  char contexts[MAX_LINES][96];
  char messages[MAX_LINES][160];
} recorder;

static void record(const char* context, const char* message, void* user) {
  recorder* r = user;
  CHECK(context != NULL && message != NULL);
  if (r->count < MAX_LINES) {
    snprintf(r->contexts[r->count], sizeof r->contexts[0], "%s", context);
    snprintf(r->messages[r->count], sizeof r->messages[0], "%s", message);
  }
  ++r->count;
}

/* The first line received with this context, or -1. */
static int find_context(const recorder* r, const char* context) {
  for (int i = 0; i < r->count && i < MAX_LINES; ++i) {
    if (strcmp(r->contexts[i], context) == 0) return i;
  }
  return -1;
}

static int32_t read_text(const char* text) {
  kova_table* table = kova_table_new();
  CHECK(table != NULL);
  const int32_t status = kova_table_read(table, text, KOVA_NUL_TERMINATED);
  kova_table_free(table);
  return status;
}

static int32_t read_example(const char* name) {
  size_t length = 0;
  char* text = kova_example_document(name, &length);
  kova_table* table = kova_table_new();
  CHECK(table != NULL);
  const int32_t status = kova_table_read(table, text, length);
  kova_table_free(table);
  free(text);
  return status;
}

static void remove_callback(void) { CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(NULL, NULL, KOVA_LOG_REASONS)); }

TEST(inactive_without_callback_or_switch) {
  CHECK(getenv("ActivateKOVALogger") == NULL);
  CHECK_INT(0, kova_log_is_active());
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  CHECK_INT(0, kova_log_is_active());
}

TEST(active_while_a_callback_is_installed) {
  static recorder r;
  CHECK_INT(0, kova_log_is_active());
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_REASONS));
  CHECK_MESSAGES("");
  CHECK_INT(1, kova_log_is_active());
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_EVERYTHING));
  CHECK_INT(1, kova_log_is_active());
  remove_callback();
  CHECK_INT(0, kova_log_is_active());
  /* Removed, it receives nothing. */
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  CHECK_INT(0, r.count);
}

TEST(reasons_of_an_empty_object) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  CHECK_INT(1, r.count);
  CHECK_STR("", r.contexts[0]);
  CHECK_STR("KOVA JSON EMPTY OR INVALID", r.messages[0]);
  remove_callback();
}

TEST(reasons_of_missing_keys) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_E_FAIL, read_example("broken_v11.json"));
  CHECK_INT(2, r.count);
  CHECK_STR("UNVALUATED MANDATORY FIELD", r.contexts[0]);
  CHECK_STR("IsLocal", r.messages[0]);
  CHECK_STR("UNVALUATED MANDATORY FIELD", r.contexts[1]);
  CHECK_STR("KOVASynchroStamp", r.messages[1]);
  remove_callback();
}

TEST(reasons_leave_out_the_other_lines) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_REASONS));
  /* A document read without failure gives no reason. */
  CHECK_STATUS(KOVA_S_OK, read_example("v8_gearbox.json"));
  CHECK_INT(0, r.count);
  /* A readable document that is refused: its reason only, not the document. */
  CHECK_STATUS(KOVA_E_FAIL, read_text("{\"version\": 13, \"References\": []}"));
  CHECK_INT(1, r.count);
  CHECK_STR("", r.contexts[0]);
  CHECK_STR("UNSUPPORTED VERSION ( version > 11 )", r.messages[0]);
  remove_callback();
}

TEST(everything_includes_the_input_document) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_EVERYTHING));
  CHECK_STATUS(KOVA_S_OK, read_example("v8_gearbox.json"));
  const int input = find_context(&r, "Input Mapping Table JSON String");
  CHECK(input >= 0);
  CHECK(r.messages[input][0] == '{');
  CHECK(strstr(r.messages[input], "\"version\"") != NULL);
  remove_callback();
}

TEST(everything_includes_the_reasons) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_EVERYTHING));
  CHECK_STATUS(KOVA_E_FAIL, read_text("{\"version\": 13, \"References\": []}"));
  const int input = find_context(&r, "Input Mapping Table JSON String");
  CHECK(input >= 0);
  int reason = -1;
  for (int i = 0; i < r.count; ++i) {
    if (strcmp(r.contexts[i], "") == 0 && strcmp(r.messages[i], "UNSUPPORTED VERSION ( version > 11 )") == 0) {
      reason = i;
    }
  }
  /* The reason comes after the document it is about. */
  CHECK(reason > input);
  remove_callback();
}

TEST(everything_includes_the_written_document) {
  static recorder r;
  kova_table* table = kova_table_new();
  kova_object* reference = kova_make_reference("R1", "P1", 0);
  CHECK_STATUS(KOVA_S_OK, kova_table_add_reference(table, reference));
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_EVERYTHING));
  char* text = NULL;
  CHECK_STATUS(KOVA_S_OK, kova_table_write(table, 0, &text, NULL));
  const int written = find_context(&r, "JSON generated from MappingTable");
  CHECK(written >= 0);
  CHECK(r.messages[written][0] == '{');
  remove_callback();
  kova_free(text);
  kova_object_release(reference);
  kova_table_free(table);
}

TEST(user_pointer_passed_as_given) {
  static recorder first;
  static recorder second;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &first, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  /* Installing again replaces the callback and its pointer. */
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &second, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_E_FAIL, read_text("{\"version\": 5, \"References\": []}"));
  CHECK_INT(1, first.count);
  CHECK_STR("KOVA JSON EMPTY OR INVALID", first.messages[0]);
  CHECK_INT(1, second.count);
  CHECK_STR("UNSUPPORTED VERSION ( version < 6 )", second.messages[0]);
  remove_callback();
}

static int other_calls = 0;
static void other_callback(const char* context, const char* message, void* user) {
  (void)context;
  (void)message;
  (void)user;
  ++other_calls;
}

TEST(replacing_the_callback) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(other_callback, NULL, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  CHECK_INT(0, r.count);
  CHECK_INT(1, other_calls);
  remove_callback();
}

TEST(invalid_wants_refused) {
  CHECK_REFUSED(kova_log_set_callback(other_callback, NULL, 2));
  CHECK_REFUSED(kova_log_set_callback(other_callback, NULL, -1));
  /* Nothing was installed. */
  CHECK_INT(0, kova_log_is_active());
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  CHECK_INT(0, other_calls);
  /* Nor is an installed callback replaced. */
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_REASONS));
  CHECK_REFUSED(kova_log_set_callback(other_callback, NULL, 7));
  CHECK_INT(1, kova_log_is_active());
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  CHECK_INT(1, r.count);
  CHECK_INT(0, other_calls);
  remove_callback();
}

TEST(last_messages_keep_to_the_reasons) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_EVERYTHING));
  CHECK_STATUS(KOVA_E_FAIL, read_example("broken_v11.json"));
  CHECK(r.count > 2);
  CHECK_MESSAGES("UNVALUATED MANDATORY FIELD IsLocal\nUNVALUATED MANDATORY FIELD KOVASynchroStamp\n");
  remove_callback();
}

/* A callback that reads a refused document itself. */
typedef struct {
  int calls;
  char contexts[4][64];
  char messages[4][64];
  int32_t nested_status;
  char nested_messages[256];
  int nested_active;
} reentry;

static void reenter(const char* context, const char* message, void* user) {
  reentry* r = user;
  if (r->calls < 4) {
    snprintf(r->contexts[r->calls], sizeof r->contexts[0], "%s", context);
    snprintf(r->messages[r->calls], sizeof r->messages[0], "%s", message);
  }
  ++r->calls;
  r->nested_active = kova_log_is_active();
  r->nested_status = read_text("{\"version\": 13, \"References\": []}");
  snprintf(r->nested_messages, sizeof r->nested_messages, "%s", kova_last_messages());
}

TEST(callback_may_call_the_library) {
  static reentry r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(reenter, &r, KOVA_LOG_REASONS));
  CHECK_STATUS(KOVA_E_FAIL, read_example("broken_v11.json"));
  /* The callback received the two lines of the outer call, not those of its own calls. */
  CHECK_INT(2, r.calls);
  CHECK_STR("UNVALUATED MANDATORY FIELD", r.contexts[0]);
  CHECK_STR("IsLocal", r.messages[0]);
  CHECK_STR("UNVALUATED MANDATORY FIELD", r.contexts[1]);
  CHECK_STR("KOVASynchroStamp", r.messages[1]);
  CHECK_INT(1, r.nested_active);
  /* The nested call's messages were its own... */
  CHECK_INT(KOVA_E_FAIL, r.nested_status);
  CHECK_STR("UNSUPPORTED VERSION ( version > 11 )\n", r.nested_messages);
  /* ...and the outer call's are still its own. */
  CHECK_MESSAGES("UNVALUATED MANDATORY FIELD IsLocal\nUNVALUATED MANDATORY FIELD KOVASynchroStamp\n");
  /* The callback is still installed and works as before. */
  CHECK_STATUS(KOVA_E_FAIL, read_text("{}"));
  CHECK_INT(3, r.calls);
  CHECK_STR("KOVA JSON EMPTY OR INVALID", r.messages[2]);
  CHECK_MESSAGES("KOVA JSON EMPTY OR INVALID\n");
  remove_callback();
}

/* The other thread: is the log active there, and what does its refused read give. */
typedef struct {
  int active;
  int32_t status;
  char messages[128];
} other_thread_view;

static void* look_from_another_thread(void* argument) {
  other_thread_view* view = argument;
  view->active = kova_log_is_active();
  view->status = read_text("{}");
  snprintf(view->messages, sizeof view->messages, "%s", kova_last_messages());
  return NULL;
}

TEST(callback_belongs_to_its_thread) {
  static recorder r;
  CHECK_STATUS(KOVA_S_OK, kova_log_set_callback(record, &r, KOVA_LOG_EVERYTHING));
  other_thread_view view = {-1, 0, ""};
  pthread_t thread;
  CHECK(pthread_create(&thread, NULL, look_from_another_thread, &view) == 0);
  CHECK(pthread_join(thread, NULL) == 0);
  CHECK_INT(0, view.active);
  CHECK_INT(KOVA_E_FAIL, view.status);
  CHECK_STR("KOVA JSON EMPTY OR INVALID\n", view.messages);
  /* Nothing of the other thread reached this thread's callback, which is still installed. */
  CHECK_INT(0, r.count);
  CHECK_INT(1, kova_log_is_active());
  remove_callback();
}

static const kova_test_case cases[] = {
    TEST_CASE(inactive_without_callback_or_switch),
    TEST_CASE(active_while_a_callback_is_installed),
    TEST_CASE(reasons_of_an_empty_object),
    TEST_CASE(reasons_of_missing_keys),
    TEST_CASE(reasons_leave_out_the_other_lines),
    TEST_CASE(everything_includes_the_input_document),
    TEST_CASE(everything_includes_the_reasons),
    TEST_CASE(everything_includes_the_written_document),
    TEST_CASE(user_pointer_passed_as_given),
    TEST_CASE(replacing_the_callback),
    TEST_CASE(invalid_wants_refused),
    TEST_CASE(last_messages_keep_to_the_reasons),
    TEST_CASE(callback_may_call_the_library),
    TEST_CASE(callback_belongs_to_its_thread),
};

RUN_TESTS(cases)
