#pragma once

#include "ports/SignatureCheck.h"

#include <atomic>

namespace quillox {

class RunLoop;

/// Ed25519 and SHA-256 by libsodium.
class SignatureCheckSodium final : public SignatureCheck {
public:
    /// `publicKey` has 32 bytes. The loop outlives this.
    SignatureCheckSodium(std::string publicKey, RunLoop&);

    bool isSigned(std::string_view bytes, std::string_view signature) const override;
    Handle hashFile(
        const std::string& path, std::function<void(std::optional<std::string>)> onHash) override;

private:
    std::string m_publicKey;
    RunLoop& m_runLoop;
};

/// The SHA-256 of a file in lower-case hexadecimal; none when it cannot be read or is given up.
/// Any thread.
std::optional<std::string> sha256OfFile(
    const std::string& path, const std::atomic<bool>& isCancelled);

} // namespace quillox
