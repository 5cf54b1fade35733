#include "support/user_database.h"

#include <dlfcn.h>
#include <pwd.h>

namespace wmq::testing {

std::function<int(size_t room)> databaseFailure;

}  // namespace wmq::testing

extern "C" int getpwuid_r(uid_t uid, passwd *resultbuf, char *buffer, size_t buflen, passwd **result) {
  using wmq::testing::databaseFailure;
  const int error = databaseFailure ? databaseFailure(buflen) : 0;
  if (error == 0) {
    using Function = int(uid_t, passwd *, char *, size_t, passwd **);
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, "getpwuid_r"))(uid, resultbuf, buffer, buflen,
                                                                        result);
  }
  *result = nullptr;
  return error;
}
