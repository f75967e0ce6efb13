#pragma once

#include <iosfwd>

namespace quillox {

struct LockFacts;

/// `quillox doctor`: prints how well this session can be sealed, as text or as JSON. The program's
/// exit code: `exitSuccess`, `exitSealedWithGaps` or `exitCannotSeal` by the report, `exitFailure`
/// when it could not be printed.
int doctorCommand(const LockFacts&, bool asJson, std::ostream& out, std::ostream& err);

} // namespace quillox
