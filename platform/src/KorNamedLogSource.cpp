#include "KorNamedLogSource.hpp"

KorNamedLogSource::KorNamedLogSource(const wchar_t* name)
    : logSourceName_(KorWstringConvertor::toKorWstring(name)) {}

KorNamedLogSource::~KorNamedLogSource() = default;
