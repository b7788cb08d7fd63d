#include "run/carrier.h"

#include "smtp/client/client.h"

namespace quillcast::run {

void SmtpCarrier::Carry(smtp::JobSource& letters) { smtp::Client(options_, clock_, cancel_).Run(letters); }

}  // namespace quillcast::run
