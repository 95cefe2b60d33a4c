#include "kernel/datasets/error_info.h"

#include "core/matrix.h"

namespace {

void Replace(BSTR& held, const std::wstring& text)
{
    SysFreeString(held);
    held = korvenrg::NewString(text);
}

}  // namespace

void LoadErrorInfo_ST(std::wstring title,
                      std::wstring message,
                      std::wstring code,
                      int first,
                      int second,
                      int third,
                      int status,
                      int style,
                      std::wstring detail,
                      int detailFirst,
                      int detailSecond,
                      short detailFlag,
                      std::wstring detailText,
                      ErrorInfo& error)
{
    error.style = style;
    error.status = status;
    error.numbers[0] = first;
    error.numbers[1] = second;
    error.numbers[2] = third;
    error.detailNumbers[0] = detailFirst;
    error.detailNumbers[1] = detailSecond;
    error.detailFlag = detailFlag;
    Replace(error.title, title);
    Replace(error.message, message);
    Replace(error.code, code);
    Replace(error.detail, detail);
    Replace(error.detailText, detailText);
}

bool korvenrg::datasets::HasFailed(const ErrorInfo& error)
{
    return error.status < 0;
}
