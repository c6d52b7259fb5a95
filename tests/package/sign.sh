#!/usr/bin/env bash
# Signing: with a throwaway self-signed certificate, packaging/sign signs
# copies of the Windows artefacts of dist/ and osslsigncode reads each
# signature back (the chain is untrusted, as expected of such a certificate).
#
#   bash tests/package/sign.sh [DIST]
set -euo pipefail
root="$(cd "$(dirname "$0")/../.." && pwd)"
dist="${1:-$root/dist}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
failures=0

openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=Ostrel test signer" \
  -keyout "$work/key.pem" -out "$work/cert.pem" 2>/dev/null
openssl pkcs12 -export -inkey "$work/key.pem" -in "$work/cert.pem" -passout pass:throwaway \
  -out "$work/signer.pfx"
(cd "$work" && unzip -q "$(ls "$dist"/Ostrel-*-windows.zip | grep -v debug)" 'x64/*' 'x86/*')
cp "$dist"/Ostrel-*-x64.msi "$work/Ostrel.msi"
files=("$work"/x64/Ostrel.dll "$work"/x64/ostrel.exe "$work"/x86/Ostrel.dll "$work"/x86/ostrel.exe "$work/Ostrel.msi")
OSTREL_SIGN_PFX="$work/signer.pfx" OSTREL_SIGN_PASSWORD=throwaway "$root/packaging/sign" "${files[@]}"
for file in "${files[@]}"; do
  report=$(osslsigncode verify -in "$file" 2>&1 || true)
  if grep -q "Message digest algorithm: SHA256" <<<"$report" && grep -q "CN=Ostrel test signer" <<<"$report"; then
    echo "ok   ${file#"$work"/}: signed, SHA-256, by the test certificate"
  else
    printf 'FAIL %s: no signature read back\n%s\n' "${file#"$work"/}" "$(head -n 20 <<<"$report")"
    failures=$((failures + 1))
  fi
done
echo "sign: $failures failure(s)"
[ "$failures" = 0 ]
