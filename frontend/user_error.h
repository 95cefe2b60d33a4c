/** What the person who typed the command can mend: one line of text. */
#ifndef KORVENRG_FRONTEND_USER_ERROR_H
#define KORVENRG_FRONTEND_USER_ERROR_H

#include <stdexcept>

namespace korvenrg::frontend {

class UserError : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace korvenrg::frontend

#endif
