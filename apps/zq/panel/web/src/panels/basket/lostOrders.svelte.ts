// Orders whose answer this page did not get: they may have arrived, so they count as doubtful until the program says
// what it knows of them, and are never sent again by themselves. And purchases that a person has put away.
import * as api from '../../api/client.ts';
import type { Purchase } from '../../api/types.ts';
import { t } from '../../i18n/texts.svelte.ts';
import { attempt } from '../../state/failure.ts';
import { purchases } from '../../state/purchases.svelte.ts';
import { repositories } from '../../state/repositories.svelte.ts';

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

  isLost(repository: string, key: string): boolean {
    return this.of(repository).some((purchase) => purchase.key === key);
  }

  add(repository: string, order: Pick<Purchase, 'key' | 'clips' | 'payment'>): void {
    const user = repositories.find(repository)?.user ?? '';
    const purchase: Purchase = { ...order, user, state: 'doubtful', code: null, text: '', trouble: '', page: '', time: 0 };
    this.#all = [{ repository, purchase }, ...this.#all];
  }

  // Asks the program what became of the order. One that has not reached it is not sent any more when it arrives later:
  // only then it is certain that nothing was bought.
  async ask(repository: string, key: string): Promise<void> {
    const answer = await attempt(() => api.withdrawOrder(repository, key));
    if (answer === undefined) {
      return;
    }
    if (answer.clips.length > 0) {
      purchases.take(repository, answer);
      return;
    }
    this.#all = this.#all.map((order) =>
      order.purchase.key === key
        ? { ...order, purchase: { ...order.purchase, state: 'refused', text: t('basket.never_arrived') } }
        : order,
    );
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
