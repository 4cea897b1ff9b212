# get-models.ps1 [-Directory DIR]: fills a directory, by default "published-models" beside this script, with the
# seven published model files under the short names that initModelsAtPath takes. It takes a network; the embedded
# ones lie in "models". What is there already stays. Every download is checked before it gets its name. Ends with
# 0 when all seven are there.
param([string]$Directory = (Join-Path $PSScriptRoot 'published-models'))

Set-StrictMode -Version 2.0
$ErrorActionPreference = 'Stop'
$ProgressPreference = 'SilentlyContinue' # the bar slows old PowerShells down
[Net.ServicePointManager]::SecurityProtocol = [Net.SecurityProtocolType]::Tls12

function Get-Digest([string]$Algorithm, [string]$File) {
  if ($Algorithm -ne 'blob') {
    return (Get-FileHash -Algorithm $Algorithm -LiteralPath $File).Hash.ToLowerInvariant()
  }
  # As git names a file: the digest of its length and its bytes.
  $bytes = [IO.File]::ReadAllBytes($File)
  $head = [Text.Encoding]::ASCII.GetBytes('blob ' + $bytes.Length + [char]0)
  $sha1 = [Security.Cryptography.SHA1]::Create()
  [void]$sha1.TransformBlock($head, 0, $head.Length, $head, 0)
  [void]$sha1.TransformFinalBlock($bytes, 0, $bytes.Length)
  return [BitConverter]::ToString($sha1.Hash).Replace('-', '').ToLowerInvariant()
}

function Test-Digests([string]$File, [string]$Digests) {
  foreach ($digest in $Digests.Split(',')) {
    $algorithm, $expected = $digest.Split(':')
    if ((Get-Digest $algorithm $File) -ne $expected) {
      return $false
    }
  }
  return $true
}

[void](New-Item -ItemType Directory -Force -Path $Directory)
$missing = 0
foreach ($line in Get-Content (Join-Path $PSScriptRoot 'models.txt')) {
  if ($line.StartsWith('#')) {
    continue
  }
  $short, $public, $digests, $url = $line.Split(' ')
  $target = Join-Path $Directory $short
  if (Test-Path -LiteralPath $target) {
    continue
  }
  $part = $target + '.part'
  Write-Host "get-models: downloading $public"
  try {
    Invoke-WebRequest -UseBasicParsing -Uri $url -OutFile $part
    if (-not (Test-Digests $part $digests)) {
      throw "$url is not the published $public"
    }
    Move-Item -LiteralPath $part -Destination $target
  } catch {
    Write-Warning "get-models: $short ($public, published at $url) is missing: $_"
    $missing++
  } finally {
    if (Test-Path -LiteralPath $part) {
      Remove-Item -LiteralPath $part
    }
  }
}
if ($missing -gt 0) {
  exit 1
}
