/* Threads: kova_last_messages and the log callback are per thread, tables used by different threads
 * are independent, and the handles of an object that no table holds may be released from any
 * thread (their counts are atomic). */
/* POSIX threads: ThreadSanitizer follows them (it does not see threads made by thrd_create). */
#define _POSIX_C_SOURCE 200809L

#include "check.h"

#include <pthread.h>

#define ROUNDS 200

/* What one thread reads, what it must be told, and what went wrong. */
typedef struct {
  const char* document;
  const char* expected_messages;
  const char* const* expected_lines; /* the messages of the reasons, in order */
  int line_count;
  const char* expected_context; /* the context of every reason */
  int lines_received;
  int wrong_lines;
  int wrong_statuses;
  int wrong_messages;
  char first_wrong[256];
} reader_state;

static void note_wrong(reader_state* state, const char* what, const char* text) {
  if (state->first_wrong[0] == '\0') {
    snprintf(state->first_wrong, sizeof state->first_wrong, "%s: %s", what, text);
  }
}

static void per_thread_callback(const char* context, const char* message, void* user) {
  reader_state* state = user;
  const int index = state->lines_received % state->line_count;
  if (strcmp(context, state->expected_context) != 0 || strcmp(message, state->expected_lines[index]) != 0) {
    ++state->wrong_lines;
    note_wrong(state, "line", message);
  }
  ++state->lines_received;
}

static void* read_in_a_loop(void* argument) {
  reader_state* state = argument;
  if (kova_log_set_callback(per_thread_callback, state, KOVA_LOG_REASONS) != KOVA_S_OK) {
    ++state->wrong_statuses;
    return NULL;
  }
  kova_table* table = kova_table_new();
  for (int round = 0; round < ROUNDS; ++round) {
    if (kova_table_read(table, state->document, KOVA_NUL_TERMINATED) != KOVA_E_FAIL) ++state->wrong_statuses;
    const char* messages = kova_last_messages();
    if (strcmp(messages, state->expected_messages) != 0) {
      ++state->wrong_messages;
      note_wrong(state, "messages", messages);
    }
    if (kova_table_clear(table) != KOVA_S_OK) ++state->wrong_statuses;
  }
  kova_table_free(table);
  kova_log_set_callback(NULL, NULL, KOVA_LOG_REASONS);
  return NULL;
}

static const char* const kBrokenLines[] = {"IsLocal", "KOVASynchroStamp"};
static const char kVersion13[] = "{\"version\": 13, \"References\": []}";
static const char* const kVersion13Lines[] = {"UNSUPPORTED VERSION ( version > 11 )"};

TEST(messages_never_mixed) {
  char* broken = kova_example_document("broken_v11.json", NULL);
  reader_state states[2] = {
      {broken, "UNVALUATED MANDATORY FIELD IsLocal\nUNVALUATED MANDATORY FIELD KOVASynchroStamp\n", kBrokenLines, 2,
       "UNVALUATED MANDATORY FIELD", 0, 0, 0, 0, ""},
      {kVersion13, "UNSUPPORTED VERSION ( version > 11 )\n", kVersion13Lines, 1, "", 0, 0, 0, 0, ""},
  };
  pthread_t threads[2];
  for (int i = 0; i < 2; ++i) CHECK(pthread_create(&threads[i], NULL, read_in_a_loop, &states[i]) == 0);
  for (int i = 0; i < 2; ++i) CHECK(pthread_join(threads[i], NULL) == 0);
  for (int i = 0; i < 2; ++i) {
    if (states[i].first_wrong[0] != '\0') fprintf(stderr, "thread %d: %s\n", i, states[i].first_wrong);
    CHECK_INT(0, states[i].wrong_statuses);
    CHECK_INT(0, states[i].wrong_messages);
    CHECK_INT(0, states[i].wrong_lines);
    CHECK_INT(ROUNDS * states[i].line_count, states[i].lines_received);
  }
  /* This thread called nothing that failed. */
  CHECK_MESSAGES("");
  CHECK_INT(0, kova_log_is_active());
  free(broken);
}

/* A thread that reads the valid documents and writes them, with no callback. */
typedef struct {
  const char* name;
  size_t references;
  int failures;
} worker_state;

static void* read_and_write(void* argument) {
  worker_state* state = argument;
  size_t length = 0;
  char* text = kova_example_document(state->name, &length);
  for (int round = 0; round < 50; ++round) {
    kova_table* table = kova_table_new();
    char* written = NULL;
    size_t written_length = 0;
    if (kova_table_read(table, text, length) != KOVA_S_OK || kova_table_reference_count(table) != state->references ||
        kova_table_write(table, round % 2, &written, &written_length) != KOVA_S_OK || kova_last_messages()[0] != '\0') {
      ++state->failures;
    }
    kova_table* copy = kova_table_new();
    if (written == NULL || kova_table_read(copy, written, written_length) != KOVA_S_OK ||
        kova_table_reference_count(copy) != state->references) {
      ++state->failures;
    }
    kova_free(written);
    kova_table_free(copy);
    kova_table_free(table);
  }
  free(text);
  return NULL;
}

TEST(tables_of_different_threads) {
  worker_state states[4] = {
      {"v6_bracket.json", 1, 0}, {"v8_gearbox.json", 3, 0}, {"v10_pump.json", 2, 0}, {"v12_conveyor.envelope", 4, 0}};
  pthread_t threads[4];
  for (int i = 0; i < 4; ++i) CHECK(pthread_create(&threads[i], NULL, read_and_write, &states[i]) == 0);
  for (int i = 0; i < 4; ++i) CHECK(pthread_join(threads[i], NULL) == 0);
  for (int i = 0; i < 4; ++i) CHECK_INT(0, states[i].failures);
}

/* Releases `count` references of one object. */
typedef struct {
  kova_object* object;
  int count;
} releaser_state;

static void* release_references(void* argument) {
  releaser_state* state = argument;
  for (int i = 0; i < state->count; ++i) kova_object_release(state->object);
  return NULL;
}

TEST(handles_of_a_free_object_released_from_any_thread) {
  kova_object* object = kova_make_reference("SHARED", "P-SHARED", 1);
  enum { kThreads = 4, kPerThread = 1000 };
  for (int i = 0; i < kThreads * kPerThread; ++i) CHECK(kova_object_retain(object) == object);
  releaser_state states[kThreads];
  pthread_t threads[kThreads];
  for (int i = 0; i < kThreads; ++i) {
    states[i].object = object;
    states[i].count = kPerThread;
    CHECK(pthread_create(&threads[i], NULL, release_references, &states[i]) == 0);
  }
  for (int i = 0; i < kThreads; ++i) CHECK(pthread_join(threads[i], NULL) == 0);
  /* The reference made first is left: the object is whole. */
  CHECK_KOVA_ID("SHARED", object);
  CHECK_STR("P-SHARED", kova_object_plexo_id(object, NULL));
  kova_object_release(object);
}

/* A thread that installs a callback and ends without removing it. */
typedef struct {
  int active_before;
  int active_with_callback;
  int calls;
} leaving_state;

static void count_call(const char* context, const char* message, void* user) {
  (void)context;
  (void)message;
  ++((leaving_state*)user)->calls;
}

static void* install_and_leave(void* argument) {
  leaving_state* state = argument;
  state->active_before = kova_log_is_active();
  if (kova_log_set_callback(count_call, state, KOVA_LOG_EVERYTHING) != KOVA_S_OK) return state;
  state->active_with_callback = kova_log_is_active();
  kova_table* table = kova_table_new();
  kova_table_read(table, "{}", 2);
  kova_table_free(table);
  return NULL;
}

TEST(callback_left_installed_when_its_thread_ends) {
  leaving_state state = {-1, -1, 0};
  pthread_t thread;
  CHECK(pthread_create(&thread, NULL, install_and_leave, &state) == 0);
  void* result = &state; /* pthread_join replaces it with the thread's result */
  CHECK(pthread_join(thread, &result) == 0);
  CHECK(result == NULL);
  CHECK_INT(0, state.active_before);
  CHECK_INT(1, state.active_with_callback);
  CHECK(state.calls >= 1);
  /* This thread never had it. */
  const int calls = state.calls;
  CHECK_INT(0, kova_log_is_active());
  kova_table* table = kova_table_new();
  CHECK_STATUS(KOVA_E_FAIL, kova_table_read(table, "{}", 2));
  kova_table_free(table);
  CHECK_INT(calls, state.calls);
}

static const kova_test_case cases[] = {
    TEST_CASE(messages_never_mixed),
    TEST_CASE(tables_of_different_threads),
    TEST_CASE(handles_of_a_free_object_released_from_any_thread),
    TEST_CASE(callback_left_installed_when_its_thread_ends),
};

RUN_TESTS(cases)
