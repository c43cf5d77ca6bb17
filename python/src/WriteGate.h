// The gate between tables being written without the GIL and changes made with it.
//
// Writing a document (to_json, write) runs without the GIL so that other Python threads go on.
// Meanwhile a thread holding the GIL must not change what the writer reads: every table and
// object change first passes BeforeChange, which returns at once when no write is under way (an
// atomic read) and otherwise waits, the GIL released, until every write under way is done. Writes
// start and stop their count with the GIL held, so no write can start while a change runs.
#ifndef KOVA_PYTHON_WRITEGATE_H_
#define KOVA_PYTHON_WRITEGATE_H_

namespace kova::python {

class WriteGate {
 public:
  // Counts a write from construction (GIL held) to destruction (GIL released or held).
  class Writing {
   public:
    Writing();
    ~Writing();
    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;
  };

  // Called with the GIL held before any change of a table or an object.
  static void BeforeChange();
};

}  // namespace kova::python

#endif  // KOVA_PYTHON_WRITEGATE_H_
