#pragma once
// One row of an export's status list, as its header documents it.

namespace tk_doc {

/// `code` is the negative status, `argument` the parameter it names (empty
/// when the row names none), `reason` the header's words for it. A list ends
/// with a row of code 0.
struct status_text {
  int code;
  const char* argument;
  const char* reason;
};

} // namespace tk_doc
