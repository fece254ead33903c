<?php
// The interface of orders.wsdl, as the environment has it: WSDL names the document, STYLE "Literal" or "Encoded".
class Orders {
    private string $session = "";

    public function session($name) {
        $this->session = is_object($name) ? "" : $name;
    }

    private function receiptOf(array $items, bool $gift): array {
        global $server;
        $total = 0.0;
        foreach ($items as $item) $total += $item->price * $item->count;
        if ($this->session !== "")
            $server->addSoapHeader(new SoapHeader("urn:orders", "session", $this->session . "!"));
        return ["total" => $total, "skus" => implode(" ", array_map(fn($i) => $i->sku . (is_null($i->note) ? "" : "*"), $items)),
                "count" => count($items), "gift" => $gift];
    }

    public function place($first, $gift = false) {
        if (getenv("STYLE") === "Encoded") return $this->receiptOf($first, $gift);
        $items = $first->items->item ?? [];
        return ["receipt" => $this->receiptOf(is_array($items) ? $items : [$items], $first->gift)];
    }

    public function echo($first) {
        return getenv("STYLE") === "Encoded" ? $first : ["bytes" => $first->bytes];
    }

    public function refuse($first) {
        $reason = is_object($first) ? $first->reason : $first;
        throw new SoapFault("Client", $reason, "urn:actor", ["left" => 7]);
    }
}
ini_set("soap.wsdl_cache_enabled", "0");
$server = new SoapServer(getenv("WSDL"), ["features" => SOAP_SINGLE_ELEMENT_ARRAYS]);
$server->setObject(new Orders());
$server->handle();
