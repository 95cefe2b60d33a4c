/** The record of a stage's outcome. */
#pragma once

#include <string>

#include "kernel/datasets/records.h"

/**
 * Records an outcome. Texts that the record holds are freed and replaced, so that it starts as zeros and a later outcome
 * stands in place of an earlier one.
 *
 * @param title, message  texts of the message
 * @param code            module word and number, as L"REGOLS01"
 * @param first, second, third  numbers of the message, carried
 * @param status          negative for a failure
 * @param style           kind of message: 48 a warning, 64 information
 * @param detail, detailFirst, detailSecond, detailFlag, detailText  a further text with its numbers, carried
 * @param error           out
 */
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
                      ErrorInfo& error);

namespace korvenrg::datasets {

/** Whether a failure was recorded. */
bool HasFailed(const ErrorInfo& error);

}  // namespace korvenrg::datasets
