// The way of signing in that a person asks for.
#pragma once

namespace quillcast::smtp {

// Each stands for several mechanisms; sasl_mechanism.cpp has them, the best first.
enum class AuthMode { kLogin, kCramMd5, kNtlm };

}  // namespace quillcast::smtp
