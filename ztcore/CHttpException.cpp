#include "ztcore/CHttpException.h"

CHttpException::CHttpException(Outcome outcome, const std::wstring& message)
    : Exception(message.c_str()), outcome_(outcome) {}

CHttpException::~CHttpException() = default;
