#pragma once

namespace platform {

/// While it lives, libcrypto may add to the thread's queue of errors; its end takes that off again. The
/// queue belongs to the program that uses this library, which may look there for errors of its own.
class CryptoErrorMark {
public:
    CryptoErrorMark();
    ~CryptoErrorMark();
    CryptoErrorMark(const CryptoErrorMark&) = delete;
    CryptoErrorMark& operator=(const CryptoErrorMark&) = delete;
};

}  // namespace platform
