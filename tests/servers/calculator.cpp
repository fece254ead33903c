// calculator PORT: the functions of calculator.gsoap, with binary values beside the message where it came so.
#include <cstdlib>
#include <string>

#include "calculator.nsmap"
#include "soapH.h"

int t__sum(soap* context, int count, double* numbers, t__sumResponse* out) {
  out->result = 0;
  for (int i = 0; i < count; ++i) out->result += numbers[i];
  out->count = count;
  if (context->header && context->header->t__session)
    context->header->t__session =
        soap_strdup(context, (std::string(context->header->t__session) + "!").c_str());
  return SOAP_OK;
}

int t__divide(soap* context, double a, double b, double* result) {
  if (b == 0)
    return soap_sender_fault(context, "division by zero", "<left xmlns=\"urn:calculator\">7</left>");
  *result = a / b;
  return SOAP_OK;
}

int t__echo(soap* context, xsd__base64Binary* bytes, t__echoResponse* out) {
  out->bytes = bytes;
  const bool isBeside = bytes && bytes->id;
  soap_clr_omode(context, SOAP_ENC_MTOM);
  if (isBeside) soap_set_omode(context, SOAP_ENC_MTOM);
  return SOAP_OK;
}

int main(int, char** arguments) {
  soap context(SOAP_XML_INDENT);
  soap_set_imode(&context, SOAP_ENC_MTOM);
  context.bind_flags = SO_REUSEADDR;
  if (soap_bind(&context, "127.0.0.1", std::atoi(arguments[1]), 16) < 0) return 1;
  while (soap_accept(&context) >= 0) {
    soap_serve(&context);
    soap_destroy(&context);
    soap_end(&context);
  }
}
