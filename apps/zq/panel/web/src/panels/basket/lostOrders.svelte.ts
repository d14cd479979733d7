// Orders whose answer this page did not get: they may have arrived, so they count as doubtful until the program says
// what it knows of them, and are never sent again by themselves. And purchases that a person has put away.
import * as api from '../../api/client.ts';
import type { Purchase } from '../../api/types.ts';
import { t } from '../../i18n/texts.svelte.ts';
import { attempt } from '../../state/failure.ts';
import { purchases } from '../../state/purchases.svelte.ts';

class LostOrders {
  #all = $state.raw<{ repository: string; purchase: Purchase }[]>([]);
  #hidden = $state.raw<ReadonlySet<string>>(new Set());

  // Those that the program has not told of in the meantime.
  of(repository: string): Purchase[] {
    const told = new Set(purchases.of(repository).map((purchase) => purchase.key));
    return this.#all
      .filter((order) => order.repository === repository && !told.has(order.purchase.key))
      .map((order) => order.purchase);
  }

  isLost(key: string): boolean {
    return this.#all.some((order) => order.purchase.key === key);
  }

  add(repository: string, order: Pick<Purchase, 'key' | 'clips' | 'payment'>): void {
    const purchase: Purchase = { ...order, state: 'doubtful', code: null, text: t('basket.lost'), page: '' };
    this.#all = [{ repository, purchase }, ...this.#all];
  }

  // Asks the program whether the order has reached it. One that it does not know was not bought.
  async ask(repository: string, key: string): Promise<void> {
    const answer = await attempt(() => api.getPurchases(repository));
    if (answer === undefined) {
      return;
    }
    for (const purchase of [...answer.purchases].reverse()) {
      purchases.take(repository, purchase);
    }
    if (!answer.purchases.some((purchase) => purchase.key === key)) {
      this.#all = this.#all.map((order) =>
        order.purchase.key === key
          ? { ...order, purchase: { ...order.purchase, state: 'refused', text: t('basket.never_arrived') } }
          : order,
      );
    }
  }

  isHidden(key: string): boolean {
    return this.#hidden.has(key);
  }

  hide(key: string): void {
    this.#hidden = new Set([...this.#hidden, key]);
    this.#all = this.#all.filter((order) => order.purchase.key !== key);
  }
}

export const lostOrders = new LostOrders();
