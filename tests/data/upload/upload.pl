#!/usr/bin/perl
# The other end of an upload: parses the form with CGI.pm, inflates the file, and writes what it got into the
# file "report" beside itself, a line a field in the order of the form, texts as hexadecimal bytes:
#
#   FileName 612E736466
#   file FILENAME application/octet-stream deflate SIZE SHA256
#
# With refuse=TEXT in the query it answers 403 and an error page with the text in a paragraph.
use strict;
use warnings;
use CGI;
use Compress::Raw::Zlib;
use Digest::SHA;

$CGI::LIST_CONTEXT_WARN = 0;
my $cgi = CGI->new;

sub answer {
  my ($status, $type, $body) = @_;
  print "Status: $status\r\nContent-Type: $type\r\n\r\n$body";
  exit 0;
}

sub hex_of { return uc unpack('H*', $_[0] // '') }

sub inflate_all {
  my ($in) = @_;
  my $digest = Digest::SHA->new(256);
  my ($inflate) = Compress::Raw::Zlib::Inflate->new(-Bufsize => 1 << 16);
  my ($size, $status) = (0, Z_OK);
  while (read($in, my $piece, 1 << 16)) {
    answer('400 Bad Request', 'text/html', '<p>Bytes behind the stream</p>') if $status == Z_STREAM_END;
    while (length $piece && $status == Z_OK) {
      $status = $inflate->inflate($piece, my $out);
      $digest->add($out);
      $size += length $out;
    }
    answer('400 Bad Request', 'text/html', '<p>Bytes behind the stream</p>') if length $piece;
  }
  answer('400 Bad Request', 'text/html', "<p>Bad stream: $status</p>") if $status != Z_STREAM_END;
  return ($size, $digest->hexdigest);
}

if (defined(my $reason = $cgi->url_param('refuse'))) {
  answer('403 Forbidden', 'text/html; charset=utf-8', "<html><h1>Sorry</h1><p>$reason</p><p>Bye</p></html>");
}

my $lines = '';
for my $name ($cgi->param) {
  if (my $handle = $cgi->upload($name)) {
    my $info = $cgi->uploadInfo($cgi->param($name));
    my ($disposition) = $info->{'Content-Disposition'} =~ /filename="([^"]*)"/;
    $lines .= join(' ', $name, hex_of($disposition), $info->{'Content-Type'}, $info->{'Content-Encoding'},
      inflate_all($handle)) . "\n";
  } else {
    $lines .= join('', map { "$name " . hex_of($_) . "\n" } $cgi->param($name));
  }
}
open(my $report, '>', 'report') or answer('500 Internal Server Error', 'text/html', "<p>$!</p>");
print $report $lines;
close $report;
answer('200 OK', 'text/plain; charset=utf-8', 'done');
