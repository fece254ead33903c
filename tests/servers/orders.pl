#!/usr/bin/perl
# orders.pl PORT: the encoded interface of orders.wsdl.
use strict;
use warnings;
use SOAP::Transport::HTTP;

package Orders;

sub place {
    my ($class, $items, $gift) = @_;
    my $total = 0;
    $total += $_->{price} * $_->{count} for @$items;
    my $skus = join ' ', map { $_->{sku} . (defined $_->{note} ? '*' : '') } @$items;
    return SOAP::Data->name(receipt => \SOAP::Data->value(
        SOAP::Data->name(total => $total)->type('double'), SOAP::Data->name(skus => $skus)->type('string'),
        SOAP::Data->name(count => scalar @$items)->type('int'),
        SOAP::Data->name(gift => $gift eq 'true' || $gift eq '1' ? 'true' : 'false')->type('boolean')))->type('ns:Receipt')->attr({'xmlns:ns' => 'urn:orders'});
}

sub echo {
    my ($class, $bytes) = @_;
    return SOAP::Data->name(bytes => $bytes)->type('base64');
}

sub refuse {
    my ($class, $reason) = @_;
    die SOAP::Fault->faultcode('Client')->faultstring($reason)->faultactor('urn:actor')->faultdetail({left => 7});
}

package main;
my $daemon = SOAP::Transport::HTTP::Daemon->new(LocalAddr => '127.0.0.1', LocalPort => $ARGV[0], Reuse => 1);
$daemon->dispatch_with({'urn:orders' => 'Orders'});
$daemon->handle;
