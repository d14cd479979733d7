// Texts with place-holders such as $COUNT$. Values are put in with one pass, so that a value that looks like a
// place-holder stays the text it is.

export type Values = Record<string, string | number>;

export function fillIn(text: string, values: Values = {}): string {
  return text.replace(/\$([A-Z_]+)\$/g, (whole, name: string) => {
    const value = values[name.toLowerCase()];
    return value === undefined ? whole : String(value);
  });
}

// The key's form for that count: "key.one", "key.other", as the language counts; "key.other" where it has no more.
export function pluralKey(
  texts: Readonly<Record<string, string>>,
  key: string,
  count: number,
  language: string,
): string {
  let form = 'other';
  try {
    form = new Intl.PluralRules(language).select(count);
  } catch {
    form = count === 1 ? 'one' : 'other';
  }
  const exact = `${key}.${form}`;
  return exact in texts ? exact : `${key}.other`;
}
